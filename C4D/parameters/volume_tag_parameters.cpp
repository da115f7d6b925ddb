#include "C4D/parameters/volume_tag_parameters.h"

#include "C4D/parameters/parameter_table.h"

namespace nbx {

using namespace table;

namespace {

using ParameterList = std::vector<host::ParameterInfo>;

host::ParameterInfo amount(std::int32_t id, const char* symbol, const char* help) {
  return real(id, symbol, 0, 0, kUnbounded, "", help);
}

host::ParameterInfo mode(std::int32_t id, const char* symbol) {
  return cycle(id, symbol, TVOLUME_MODE_SET, {{TVOLUME_MODE_ADD, "add"}, {TVOLUME_MODE_SET, "set"}},
               "add: the amount is added in each frame; set: the gas is raised to the amount");
}

ParameterList amounts() {
  return {
      amount(TVOLUME_DENSITY, "TVOLUME_DENSITY", "Density on the object's surface"),
      mode(TVOLUME_DENSITY_MODE, "TVOLUME_DENSITY_MODE"),
      amount(TVOLUME_TEMPERATURE, "TVOLUME_TEMPERATURE", "Temperature on the object's surface"),
      mode(TVOLUME_TEMPERATURE_MODE, "TVOLUME_TEMPERATURE_MODE"),
      amount(TVOLUME_FUEL, "TVOLUME_FUEL", "Fuel on the object's surface"),
      mode(TVOLUME_FUEL_MODE, "TVOLUME_FUEL_MODE"),
      amount(TVOLUME_BURN, "TVOLUME_BURN", "Burn on the object's surface"),
      mode(TVOLUME_BURN_MODE, "TVOLUME_BURN_MODE"),
      real(TVOLUME_EXPANSION, "TVOLUME_EXPANSION", 0, -kUnbounded, kUnbounded, "1/s",
           "Volume of gas that the surface gives, in volumes of its voxels; below 0 it takes"),
  };
}

ParameterList velocities() {
  return {
      real(TVOLUME_NORMAL_FORCE, "TVOLUME_NORMAL_FORCE", 0, -kUnbounded, kUnbounded, "units/frame",
           "Speed that the gas gets off the surface; below 0: into it"),
      vector(TVOLUME_DIRECTION, "TVOLUME_DIRECTION", {0, 0, 0}, "units/s",
             "Velocity that the gas gets, along the object's own axes"),
      real(TVOLUME_VELOCITY_TRANSFER, "TVOLUME_VELOCITY_TRANSFER", 0, -kUnbounded, kUnbounded, "",
           "Share of a particle's velocity that the gas gets"),
      still(flag(TVOLUME_SOLID, "TVOLUME_SOLID", false, "The gas flows around the object")),
  };
}

/// Where the source is, and how strong at each place.
ParameterList shape() {
  auto selections = still(parameter(TVOLUME_SELECTIONS, "TVOLUME_SELECTIONS",
                                    host::ParameterType::Links, host::LinkList(), "",
                                    "Selections of polygons that are the source; none: the whole "
                                    "object and what lies under it. A solid is always whole"));
  return {
      real(TVOLUME_THICKNESS, "TVOLUME_THICKNESS", 1, 0, kUnbounded, "units",
           "Distance from the surface at which the source ends; at least 1.73 voxels"),
      flag(TVOLUME_FILL, "TVOLUME_FILL", true, "The object's inside is part of the source"),
      std::move(selections),
      cycle(TVOLUME_SURFACE_CHANNEL, "TVOLUME_SURFACE_CHANNEL", TVOLUME_SURFACE_NONE,
            {{TVOLUME_SURFACE_NONE, "none"},
             {TVOLUME_SURFACE_CHANNEL_0, "color"},
             {TVOLUME_SURFACE_CHANNEL_1, "emission"},
             {TVOLUME_SURFACE_CHANNEL_2, "transparency"},
             {TVOLUME_SURFACE_CHANNEL_7, "mask"}},
            "Channel of the surface's material that scales the source, as it is seen in pictures; "
            "nothing is emitted where a material without tile ends"),
      link(TVOLUME_SHADER, "TVOLUME_SHADER", host::LinkTarget::Shader,
           "Texture in space that scales the source and its normal_force"),
      flag(TVOLUME_CORNER_WEIGHTS, "TVOLUME_CORNER_WEIGHTS", false,
           "Painted weights of the mesh scale the source and its normal_force"),
      cycle(TVOLUME_PARTICLE_MAP, "TVOLUME_PARTICLE_MAP", TVOLUME_PARTICLE_NOTHING,
            {{TVOLUME_PARTICLE_NOTHING, "nothing"},
             {TVOLUME_PARTICLE_AGE, "age"},
             {TVOLUME_PARTICLE_SPEED, "speed"},
             {TVOLUME_PARTICLE_MASS, "mass"},
             {TVOLUME_PARTICLE_SIZE, "size"}},
            "What of a particle makes it a stronger or weaker source, by particle_curve"),
      straight_curve(TVOLUME_PARTICLE_CURVE, "TVOLUME_PARTICLE_CURVE", {{0, 0}, {1, 1}},
                     "From that to the strength of a particle's source"),
  };
}

}  // namespace

host::ClassDescription volume_tag_description() {
  host::ClassDescription description{
      "emitter",
      "Makes an object and its children a source",
      {still(flag(TVOLUME_ENABLED, "TVOLUME_ENABLED", true, "The tag counts"))}};
  for (const ParameterList& group : {amounts(), velocities(), shape()})
    description.parameters.insert(description.parameters.end(), group.begin(), group.end());
  description.parameters.push_back(still(
      whole(TVOLUME_VERSION, "TVOLUME_VERSION", kTagParametersVersion, 0, kTagParametersVersion,
            "Version of the set of parameters; older ones are converted")));
  return description;
}

}  // namespace nbx
