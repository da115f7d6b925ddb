#include "C4D/parameters/volume_parameter_groups.h"

namespace nbx {

using namespace table;

namespace {

constexpr const char* kAcceleration = "units/s^2";

ParameterList density_parameters() {
  return {
      still(flag(OVOLUME_SIMULATE_DENSITY, "OVOLUME_SIMULATE_DENSITY", false,
                 "Simulate the density of smoke")),
      still(flag(OVOLUME_CACHE_DENSITY, "OVOLUME_CACHE_DENSITY", true,
                 "Keep the density in the frames")),
      real(OVOLUME_BUOYANCY_DENSITY, "OVOLUME_BUOYANCY_DENSITY", 1000, 0, kUnbounded, kAcceleration,
           "Acceleration of gas of density 1 or more"),
      vector(OVOLUME_DIRECTION_DENSITY, "OVOLUME_DIRECTION_DENSITY", {0, -1, 0}, "",
             "Where density pulls the gas"),
      real(OVOLUME_DECAY_DENSITY, "OVOLUME_DECAY_DENSITY", 0, 0, 1, kPartPerFrame,
           "Part of the density that vanishes"),
      real(OVOLUME_DIFFUSION_DENSITY, "OVOLUME_DIFFUSION_DENSITY", 0, 0, kUnbounded, kDiffusionUnit,
           "How fast density spreads in resting gas"),
  };
}

ParameterList temperature_parameters() {
  return {
      still(flag(OVOLUME_SIMULATE_TEMPERATURE, "OVOLUME_SIMULATE_TEMPERATURE", true,
                 "Simulate the temperature")),
      still(flag(OVOLUME_CACHE_TEMPERATURE, "OVOLUME_CACHE_TEMPERATURE", true,
                 "Keep the temperature in the frames")),
      real(OVOLUME_BUOYANCY_TEMPERATURE, "OVOLUME_BUOYANCY_TEMPERATURE", 600, 0, kUnbounded,
           kAcceleration, "Acceleration of gas of temperature 1 or more"),
      vector(OVOLUME_DIRECTION_TEMPERATURE, "OVOLUME_DIRECTION_TEMPERATURE", {0, 1, 0}, "",
             "Where temperature pushes the gas"),
      real(OVOLUME_DECAY_TEMPERATURE, "OVOLUME_DECAY_TEMPERATURE", 0, 0, 1, kPartPerFrame,
           "Part of the temperature that vanishes"),
      real(OVOLUME_DIFFUSION_TEMPERATURE, "OVOLUME_DIFFUSION_TEMPERATURE", 0, 0, kUnbounded,
           kDiffusionUnit, "How fast temperature spreads in resting gas"),
  };
}

}  // namespace

ParameterList smoke_parameters() {
  ParameterList all = density_parameters();
  for (auto& info : temperature_parameters()) all.push_back(std::move(info));
  return all;
}

}  // namespace nbx
