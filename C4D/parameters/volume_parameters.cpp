#include "C4D/parameters/volume_parameters.h"

#include "C4D/parameters/volume_parameter_groups.h"

namespace nbx {

namespace {

using namespace table;

ParameterList domain_parameters() {
  return {
      bounded(vector(OVOLUME_SIZE, "OVOLUME_SIZE", {200, 200, 200}, "units",
                     "Edges of the domain, centered on the object"),
              0, 1e12),
      still(real(OVOLUME_VOXEL_SIZE, "OVOLUME_VOXEL_SIZE", 1, -kUnbounded, 1e12, "units",
                 "Edge of a voxel; must be above 0")),
      flag(OVOLUME_CLOSED_X_MIN, "OVOLUME_CLOSED_X_MIN", false,
           "The domain's side at the low end of x is a wall; else gas leaves through it"),
      flag(OVOLUME_CLOSED_X_MAX, "OVOLUME_CLOSED_X_MAX", false, "A wall at the high end of x"),
      flag(OVOLUME_CLOSED_Y_MIN, "OVOLUME_CLOSED_Y_MIN", false,
           "A wall at the low end of y: a floor"),
      flag(OVOLUME_CLOSED_Y_MAX, "OVOLUME_CLOSED_Y_MAX", false,
           "A wall at the high end of y: a ceiling"),
      flag(OVOLUME_CLOSED_Z_MIN, "OVOLUME_CLOSED_Z_MIN", false, "A wall at the low end of z"),
      flag(OVOLUME_CLOSED_Z_MAX, "OVOLUME_CLOSED_Z_MAX", false, "A wall at the high end of z"),
  };
}

/// What part of the domain is simulated.
ParameterList container_parameters() {
  const auto threshold = [](std::int32_t id, const char* symbol, const char* help) {
    return real(id, symbol, 0.001, 0, kUnbounded, "", help);
  };
  return {
      threshold(OVOLUME_BOX_THRESHOLD_DENSITY, "OVOLUME_BOX_THRESHOLD_DENSITY",
                "Density above which the gas keeps being simulated"),
      threshold(OVOLUME_BOX_THRESHOLD_TEMPERATURE, "OVOLUME_BOX_THRESHOLD_TEMPERATURE",
                "The same for temperature"),
      threshold(OVOLUME_BOX_THRESHOLD_FUEL, "OVOLUME_BOX_THRESHOLD_FUEL", "The same for fuel"),
      threshold(OVOLUME_BOX_THRESHOLD_BURN, "OVOLUME_BOX_THRESHOLD_BURN", "The same for burn"),
      real(OVOLUME_VELOCITY_THRESHOLD, "OVOLUME_VELOCITY_THRESHOLD", 1000, -kUnbounded, kUnbounded,
           "units/s", "Speed above which air without gas is simulated too; below 0: never"),
      flag(OVOLUME_FIT_TO_WALLS, "OVOLUME_FIT_TO_WALLS", true,
           "All between the gas and the domain's walls is simulated, so that they act on it"),
  };
}

ParameterList time_parameters() {
  return {
      still(cycle(OVOLUME_TIME_MODE, "OVOLUME_TIME_MODE", OVOLUME_TIME_PREVIEW_RANGE,
                  {{OVOLUME_TIME_PREVIEW_RANGE, "preview_range"},
                   {OVOLUME_TIME_DOCUMENT_RANGE, "document_range"},
                   {OVOLUME_TIME_OWN_RANGE, "own_range"}},
                  "The frames to simulate: a range of the document, or time_start to time_end")),
      time(OVOLUME_TIME_START, "OVOLUME_TIME_START", {0, 1}, "First frame of own_range"),
      time(OVOLUME_TIME_END, "OVOLUME_TIME_END", {3, 1}, "Last frame of own_range"),
      real(OVOLUME_TIME_SCALE, "OVOLUME_TIME_SCALE", 1, 0, kUnbounded, "",
           "Speed of the simulation's clock; at least a millionth"),
      real(OVOLUME_CFL, "OVOLUME_CFL", 2, 0.01, kUnbounded, "voxels",
           "Longest way of the gas in a substep"),
      whole(OVOLUME_MAX_SUBSTEPS, "OVOLUME_MAX_SUBSTEPS", 1, 1, 10000,
            "Most substeps of a frame, whatever cfl asks for"),
      whole(OVOLUME_SOURCE_SUBSTEPS, "OVOLUME_SOURCE_SUBSTEPS", 0, 0, 10000,
            "Samples of moving sources in a substep; 0: one for each voxel of movement"),
  };
}

ParameterList numeric_parameters() {
  return {
      still(flag(OVOLUME_CACHE_VELOCITY, "OVOLUME_CACHE_VELOCITY", false,
                 "Keep the velocity in the frames")),
      still(flag(OVOLUME_ADVECT_CUBIC, "OVOLUME_ADVECT_CUBIC", false,
                 "Sample with cubics: finer detail, more time; else linearly")),
      flag(OVOLUME_ADAPTIVE_TRACER, "OVOLUME_ADAPTIVE_TRACER", false,
           "Trace the gas voxel by voxel: for steps of many voxels"),
      still(flag(OVOLUME_CACHE_DIRECT, "OVOLUME_CACHE_DIRECT", false,
                 "Use less memory and more time")),
  };
}

}  // namespace

host::ParameterInfo channel_choice(std::int32_t id, const char* symbol, const char* help) {
  return cycle(id, symbol, OVOLUME_CHANNEL_NONE,
               {{OVOLUME_CHANNEL_NONE, "none"},
                {OVOLUME_CHANNEL_DENSITY, "density"},
                {OVOLUME_CHANNEL_TEMPERATURE, "temperature"},
                {OVOLUME_CHANNEL_FUEL, "fuel"},
                {OVOLUME_CHANNEL_BURN, "burn"}},
               help);
}

host::ClassDescription volume_description() {
  host::ClassDescription description{
      "volume", "The container of one simulation: its domain, its physics and what is kept of it",
      domain_parameters()};
  for (const ParameterList& group :
       {time_parameters(), smoke_parameters(), fire_parameters(), motion_parameters(),
        container_parameters(), numeric_parameters(), cache_parameters(), upres_parameters(),
        shading_parameters(), lighting_parameters(), marching_parameters(), display_parameters(),
        info_parameters()})
    description.parameters.insert(description.parameters.end(), group.begin(), group.end());
  return description;
}

}  // namespace nbx
