#include "C4D/parameters/volume_parameter_groups.h"

namespace nbx {

using namespace table;

namespace {

ParameterList fuel_parameters() {
  return {
      still(flag(OVOLUME_SIMULATE_FUEL, "OVOLUME_SIMULATE_FUEL", false,
                 "Simulate fuel, which burns and feeds burn, temperature and density")),
      still(flag(OVOLUME_CACHE_FUEL, "OVOLUME_CACHE_FUEL", false, "Keep the fuel in the frames")),
      real(OVOLUME_DECAY_FUEL, "OVOLUME_DECAY_FUEL", 0.8, 0, kUnbounded, "per frame",
           "Most fuel that burns"),
      real(OVOLUME_DIFFUSION_FUEL, "OVOLUME_DIFFUSION_FUEL", 0, 0, kUnbounded, kDiffusionUnit,
           "How fast fuel spreads in resting gas"),
      channel_choice(OVOLUME_FUEL_DRIVER, "OVOLUME_FUEL_DRIVER",
                     "Channel that limits what burns; none, or one that isn't simulated: no limit "
                     "but decay_fuel"),
      curve(OVOLUME_FUEL_CURVE, "OVOLUME_FUEL_CURVE", {{0, 0}, {1, 1}},
            "From the driver's value to the most fuel that burns in a substep"),
      real(OVOLUME_FUEL_DRIVER_BLUR, "OVOLUME_FUEL_DRIVER_BLUR", 0, 0, kUnbounded, "units",
           "Radius over which the driver is averaged: lets a flame ignite what is around it"),
      real(OVOLUME_FUEL_TO_TEMPERATURE, "OVOLUME_FUEL_TO_TEMPERATURE", 1, 0, kUnbounded, "",
           "Temperature of gas where a unit of fuel burns in a frame"),
      real(OVOLUME_FUEL_TO_DENSITY, "OVOLUME_FUEL_TO_DENSITY", 1, 0, kUnbounded, "",
           "Density of smoke that a unit of fuel leaves"),
      real(OVOLUME_FUEL_TO_EXPANSION, "OVOLUME_FUEL_TO_EXPANSION", 0, 0, kUnbounded, "",
           "Volume of gas that a unit of fuel gives, in volumes of its voxel"),
  };
}

ParameterList burn_parameters() {
  return {
      still(flag(OVOLUME_SIMULATE_BURN, "OVOLUME_SIMULATE_BURN", false,
                 "Simulate burn, the part of a fire that glows")),
      still(flag(OVOLUME_CACHE_BURN, "OVOLUME_CACHE_BURN", true, "Keep the burn in the frames")),
      cycle(
          OVOLUME_DECAY_MODE_BURN, "OVOLUME_DECAY_MODE_BURN", OVOLUME_DECAY_MODE_EXPONENTIAL,
          {{OVOLUME_DECAY_MODE_LINEAR, "linear"}, {OVOLUME_DECAY_MODE_EXPONENTIAL, "exponential"}},
          "linear: decay_linear_burn goes out; exponential: the part decay_burn"),
      real(OVOLUME_DECAY_BURN, "OVOLUME_DECAY_BURN", 0.2, 0, 1, kPartPerFrame,
           "Part of the burn that goes out"),
      real(OVOLUME_DECAY_LINEAR_BURN, "OVOLUME_DECAY_LINEAR_BURN", 0.1, 0, kUnbounded, "per frame",
           "Burn that goes out"),
      real(OVOLUME_DIFFUSION_BURN, "OVOLUME_DIFFUSION_BURN", 0, 0, kUnbounded, kDiffusionUnit,
           "How fast burn spreads in resting gas"),
  };
}

}  // namespace

ParameterList fire_parameters() {
  ParameterList all = fuel_parameters();
  for (auto& info : burn_parameters()) all.push_back(std::move(info));
  return all;
}

}  // namespace nbx
