#include "C4D/volume_parameters.h"

#include "C4D/parameter_table.h"

namespace nbx {

host::ClassDescription volume_description() {
  using namespace table;
  const char* const per_frame = "of 1 per frame";
  const char* const acceleration = "units/s^2";
  return {
      "volume",
      "The container of one simulation: its domain, its physics and what is kept of it",
      {
          // The domain.
          vector(OVOLUME_SIZE, "OVOLUME_SIZE", {200, 200, 200}, "units",
                 "Edges of the domain, centred on the object"),
          still(real(OVOLUME_VOXEL_SIZE, "OVOLUME_VOXEL_SIZE", 1, 0, kUnbounded, "units",
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

          // The time.
          still(
              cycle(OVOLUME_TIME_MODE, "OVOLUME_TIME_MODE", OVOLUME_TIME_PREVIEW_RANGE,
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

          // The channels.
          still(flag(OVOLUME_SIMULATE_DENSITY, "OVOLUME_SIMULATE_DENSITY", false,
                     "Simulate the density of smoke")),
          still(flag(OVOLUME_SIMULATE_TEMPERATURE, "OVOLUME_SIMULATE_TEMPERATURE", true,
                     "Simulate the temperature")),
          still(flag(OVOLUME_CACHE_DENSITY, "OVOLUME_CACHE_DENSITY", true,
                     "Keep the density in the frames")),
          still(flag(OVOLUME_CACHE_TEMPERATURE, "OVOLUME_CACHE_TEMPERATURE", true,
                     "Keep the temperature in the frames")),
          still(flag(OVOLUME_CACHE_VELOCITY, "OVOLUME_CACHE_VELOCITY", false,
                     "Keep the velocity in the frames")),
          real(OVOLUME_BUOYANCY_DENSITY, "OVOLUME_BUOYANCY_DENSITY", 1000, 0, kUnbounded,
               acceleration, "Acceleration of gas of density 1 or more"),
          vector(OVOLUME_DIRECTION_DENSITY, "OVOLUME_DIRECTION_DENSITY", {0, -1, 0}, "",
                 "Where density pulls the gas"),
          real(OVOLUME_DECAY_DENSITY, "OVOLUME_DECAY_DENSITY", 0, 0, 1, per_frame,
               "Part of the density that vanishes"),
          real(OVOLUME_BUOYANCY_TEMPERATURE, "OVOLUME_BUOYANCY_TEMPERATURE", 600, 0, kUnbounded,
               acceleration, "Acceleration of gas of temperature 1 or more"),
          vector(OVOLUME_DIRECTION_TEMPERATURE, "OVOLUME_DIRECTION_TEMPERATURE", {0, 1, 0}, "",
                 "Where temperature pushes the gas"),
          real(OVOLUME_DECAY_TEMPERATURE, "OVOLUME_DECAY_TEMPERATURE", 0, 0, 1, per_frame,
               "Part of the temperature that vanishes"),

          // The wind.
          vector(OVOLUME_WIND_DIRECTION, "OVOLUME_WIND_DIRECTION", {1, 0, 0}, "",
                 "Where the wind blows to"),
          real(OVOLUME_WIND_SPEED, "OVOLUME_WIND_SPEED", 0, 0, kUnbounded, "units/s",
               "Speed of the air around the domain"),
          flag(OVOLUME_WIND_WORLD, "OVOLUME_WIND_WORLD", false,
               "The air moves with the object; else a moving object feels it as wind"),

          // The numerics.
          still(flag(OVOLUME_ADVECT_CUBIC, "OVOLUME_ADVECT_CUBIC", false,
                     "Sample with cubics: finer detail, more time; else linearly")),
          flag(OVOLUME_ADAPTIVE_TRACER, "OVOLUME_ADAPTIVE_TRACER", false,
               "Trace the gas voxel by voxel: for steps of many voxels"),
          still(flag(OVOLUME_CACHE_DIRECT, "OVOLUME_CACHE_DIRECT", false,
                     "Use less memory and more time")),
      }};
}

}  // namespace nbx
