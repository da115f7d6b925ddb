// The table of the emitter tag's parameters. The tag makes the object that carries it, and all
// objects below that, a source.
#pragma once

#include "C4D/parameters/parameter_group.h"

namespace nbx {

inline constexpr std::int32_t kVolumeTag = 1023165;

/// Version of the tag's set of parameters, kept in VERSION.
inline constexpr std::int32_t kTagParametersVersion = 6;

/// Values of the modes.
enum TagMode : std::int32_t {
  TVOLUME_MODE_ADD = 1042,
  TVOLUME_MODE_SET = 1043,
};

/// Values of PARTICLE_MAP.
enum TagParticleMap : std::int32_t {
  TVOLUME_PARTICLE_NOTHING = 1052,
  TVOLUME_PARTICLE_AGE = 1053,
  TVOLUME_PARTICLE_SPEED = 1054,
  TVOLUME_PARTICLE_MASS = 1055,
  TVOLUME_PARTICLE_SIZE = 1056,
};

/// Values of SURFACE_CHANNEL: channels of materials by number.
enum TagSurfaceChannel : std::int32_t {
  TVOLUME_SURFACE_NONE = 1060,
  TVOLUME_SURFACE_CHANNEL_1 = 1061,
  TVOLUME_SURFACE_CHANNEL_2 = 1062,
  TVOLUME_SURFACE_CHANNEL_7 = 1063,
  TVOLUME_SURFACE_CHANNEL_0 = 1064,
};

class TagGroup : public ParameterGroup {
 protected:
  TagGroup() : ParameterGroup("TVOLUME", Changes::kGas) {}

  Line<double> amount(std::int32_t id, const char* name, const char* help) {
    return real(id, name, 0, 0, kUnbounded, "", help);
  }
  Line<TagMode> mode(std::int32_t id, const char* name) {
    return cycle(id, name, TVOLUME_MODE_SET, {{TVOLUME_MODE_ADD, "add"}, {TVOLUME_MODE_SET, "set"}},
                 "set: raises the gas to the amount; add: adds the amount in each frame, so small "
                 "amounts are enough");
  }
};

struct EmissionParameters : TagGroup {
  Flag ENABLED = flag(1057, "ENABLED", true, "Turns the tag on").still();
  Real DENSITY = amount(
      1001, "DENSITY",
      "Density at the object's surface. 1 is usual: buoyancy_density is at full strength there");
  Choice<TagMode> DENSITY_MODE = mode(1039, "DENSITY_MODE");
  Real TEMPERATURE = amount(1002, "TEMPERATURE",
                            "Temperature at the object's surface. 1 is usual: buoyancy_temperature "
                            "is at full strength there");
  Choice<TagMode> TEMPERATURE_MODE = mode(1040, "TEMPERATURE_MODE");
  Real FUEL = amount(
      1004, "FUEL",
      "Fuel at the object's surface. 0.5 to 1 is usual; it burns at decay_fuel of the volume");
  Choice<TagMode> FUEL_MODE = mode(1041, "FUEL_MODE");
  Real BURN =
      amount(1067, "BURN",
             "Burn at the object's surface: gas that is already in flames. 0.5 to 1 is usual");
  Choice<TagMode> BURN_MODE = mode(1066, "BURN_MODE");
  Real EXPANSION = real(1032, "EXPANSION", 0, -kUnbounded, kUnbounded, "1/s",
                        "Volume of gas that the surface emits, in volumes of its voxels; below 0 "
                        "it sucks gas in");
  Real NORMAL_FORCE = real(1005, "NORMAL_FORCE", 0, -kUnbounded, kUnbounded, "units/frame",
                           "Speed at which gas leaves the surface; below 0: enters it");
  Vector DIRECTION = vector(1035, "DIRECTION", {0, 0, 0}, "units/s",
                            "Velocity of the emitted gas, along the object's axes");
  Real VELOCITY_TRANSFER = real(1046, "VELOCITY_TRANSFER", 0, -kUnbounded, kUnbounded, "",
                                "Fraction of a particle's velocity that the gas takes on")
                               .enabled_if(off(SOLID));
  Flag SOLID = flag(1003, "SOLID", false, "Gas flows around the object").still();
};

/// Where the source is, and how strong at each place.
struct TagParameters : EmissionParameters {
  Real THICKNESS = real(1013, "THICKNESS", 1, 0, kUnbounded, "units",
                        "Distance from the surface at which the source ends, at least 1.73 voxels");
  Flag FILL = flag(1020, "FILL", true, "The inside of the object is part of the source")
                  .enabled_if(off(SOLID));
  Links SELECTIONS = links(1006, "SELECTIONS",
                           "Polygon selections that emit; none: the whole object and the objects "
                           "below it. A solid is always whole");
  Choice<TagSurfaceChannel> SURFACE_CHANNEL =
      cycle(1059, "SURFACE_CHANNEL", TVOLUME_SURFACE_NONE,
            {{TVOLUME_SURFACE_NONE, "none"},
             {TVOLUME_SURFACE_CHANNEL_0, "color"},
             {TVOLUME_SURFACE_CHANNEL_1, "emission"},
             {TVOLUME_SURFACE_CHANNEL_2, "transparency"},
             {TVOLUME_SURFACE_CHANNEL_7, "mask"}},
            "Channel of the surface's material that scales the source, as seen in pictures; a "
            "material that isn't tiled emits nothing beyond its edges");
  Link SHADER = link(1047, "SHADER", host::LinkTarget::Shader,
                     "Texture in space that scales the source and its normal_force");
  Flag CORNER_WEIGHTS = flag(1058, "CORNER_WEIGHTS", false,
                             "Painted weights of the mesh scale the source and its normal_force");
  Choice<TagParticleMap> PARTICLE_MAP =
      cycle(1050, "PARTICLE_MAP", TVOLUME_PARTICLE_NOTHING,
            {{TVOLUME_PARTICLE_NOTHING, "nothing"},
             {TVOLUME_PARTICLE_AGE, "age"},
             {TVOLUME_PARTICLE_SPEED, "speed"},
             {TVOLUME_PARTICLE_MASS, "mass"},
             {TVOLUME_PARTICLE_SIZE, "size"}},
            "Property of a particle that scales its source, by particle_curve");
  Curve PARTICLE_CURVE =
      straight_curve(1051, "PARTICLE_CURVE", {{0, 0}, {1, 1}},
                     "Maps the property of particle_map to the strength of the source")
          .enabled_if(is_not(PARTICLE_MAP, TVOLUME_PARTICLE_NOTHING));
  Whole VERSION = whole(1044, "VERSION", kTagParametersVersion, 0, kTagParametersVersion,
                        "Version of the set of parameters; older documents are converted")
                      .still()
                      .changes(Changes::kView);
};

/// Not to be read before main() or the load of the plug-in.
extern const TagParameters TVOLUME;

host::ClassDescription volume_tag_description();

}  // namespace nbx
