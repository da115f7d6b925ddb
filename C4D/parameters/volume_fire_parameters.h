// Fuel, and what it turns into when it burns.
#pragma once

#include "C4D/parameters/volume_smoke_parameters.h"

namespace nbx {

/// Values of DECAY_MODE_BURN.
enum VolumeDecayMode : std::int32_t {
  OVOLUME_DECAY_MODE_LINEAR = 1373,
  OVOLUME_DECAY_MODE_EXPONENTIAL = 1374,
};

struct FuelParameters : TemperatureParameters {
  Flag SIMULATE_FUEL = flag(1109, "SIMULATE_FUEL", false,
                            "Simulate fuel, which burns and produces burn, temperature and density")
                           .still();
  const Condition has_fuel = on(SIMULATE_FUEL);
  Flag CACHE_FUEL = flag(1296, "CACHE_FUEL", false, "Store the fuel in the cache")
                        .still()
                        .changes(Changes::kFrames)
                        .enabled_if(has_fuel);
  Real DECAY_FUEL = real(1063, "DECAY_FUEL", 0.8, 0, kUnbounded, "per frame",
                         "Largest amount of fuel that burns: lower values make flames last longer")
                        .enabled_if(has_fuel);
  Real DIFFUSION_FUEL = real(1206, "DIFFUSION_FUEL", 0, 0, kUnbounded, kDiffusionUnit,
                             "How fast fuel spreads through still gas")
                            .enabled_if(has_fuel);
  Flag CONSERVE_FUEL = flag(1432, "CONSERVE_FUEL", false,
                            "Keep the total amount of fuel while gas moves: only burning and open "
                            "faces take fuel away, and fuel that expands gets thinner")
                           .enabled_if(has_fuel);
  Choice<VolumeChannel> FUEL_DRIVER =
      channel(1369, "FUEL_DRIVER", OVOLUME_CHANNEL_NONE,
              "Channel that limits how much fuel burns, by fuel_curve; with none, or a channel "
              "that isn't simulated, only decay_fuel limits it")
          .enabled_if(has_fuel);
  const Condition has_driven_fuel = has_fuel && chosen(FUEL_DRIVER);
  Curve FUEL_CURVE = curve(1370, "FUEL_CURVE", {{0, 0}, {1, 1}},
                           "Maps the driver's value to the largest amount of fuel that burns in a "
                           "substep")
                         .enabled_if(has_driven_fuel);
  Real FUEL_DRIVER_BLUR = real(1371, "FUEL_DRIVER_BLUR", 0, 0, kUnbounded, "units",
                               "Radius over which the driver is averaged: lets a flame ignite the "
                               "fuel around it")
                              .enabled_if(has_driven_fuel);
  Real FUEL_TO_TEMPERATURE = real(1011, "FUEL_TO_TEMPERATURE", 1, 0, kUnbounded, "",
                                  "Temperature of gas in which 1 unit of fuel burns in a frame")
                                 .enabled_if(has_fuel && has_temperature);
  Real FUEL_TO_DENSITY = real(1014, "FUEL_TO_DENSITY", 1, 0, kUnbounded, "",
                              "Smoke density that burning 1 unit of fuel adds")
                             .enabled_if(has_fuel && has_density);
  Real FUEL_TO_EXPANSION = real(1010, "FUEL_TO_EXPANSION", 0, 0, kUnbounded, "",
                                "Expansion of gas in which 1 unit of fuel burns, in volumes of its "
                                "voxel: higher values make explosions")
                               .enabled_if(has_fuel);
};

struct BurnParameters : FuelParameters {
  Flag SIMULATE_BURN =
      flag(1110, "SIMULATE_BURN", false, "Simulate burn, the glowing part of a fire").still();
  const Condition has_burn = on(SIMULATE_BURN);
  Flag CACHE_BURN = flag(1297, "CACHE_BURN", true, "Store the burn in the cache")
                        .still()
                        .changes(Changes::kFrames)
                        .enabled_if(has_burn);
  Choice<VolumeDecayMode> DECAY_MODE_BURN =
      cycle(
          1372, "DECAY_MODE_BURN", OVOLUME_DECAY_MODE_EXPONENTIAL,
          {{OVOLUME_DECAY_MODE_LINEAR, "linear"}, {OVOLUME_DECAY_MODE_EXPONENTIAL, "exponential"}},
          "How burn fades: linear by the amount decay_linear_burn, exponential by the fraction "
          "decay_burn")
          .enabled_if(has_burn);
  Real DECAY_BURN =
      real(1040, "DECAY_BURN", 0.2, 0, 1, kPartPerFrame,
           "Fraction of the burn that fades: higher values make shorter flames")
          .enabled_if(has_burn && is(DECAY_MODE_BURN, OVOLUME_DECAY_MODE_EXPONENTIAL));
  Real DECAY_LINEAR_BURN =
      real(1375, "DECAY_LINEAR_BURN", 0.1, 0, kUnbounded, "per frame",
           "Amount of burn that fades: higher values make shorter flames")
          .enabled_if(has_burn && is(DECAY_MODE_BURN, OVOLUME_DECAY_MODE_LINEAR));
  Real DIFFUSION_BURN = real(1244, "DIFFUSION_BURN", 0, 0, kUnbounded, kDiffusionUnit,
                             "How fast burn spreads through still gas and blurs")
                            .enabled_if(has_burn);
  Flag CONSERVE_BURN =
      flag(1433, "CONSERVE_BURN", false,
           "Keep the total amount of burn while gas moves: flames that expand get fainter")
          .enabled_if(has_burn);
};

}  // namespace nbx
