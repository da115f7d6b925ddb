// Density and temperature of the gas.
#pragma once

#include "C4D/parameters/volume_domain_parameters.h"

namespace nbx {

struct DensityParameters : TimeParameters {
  static constexpr const char* kAcceleration = "units/s^2";

  Flag SIMULATE_DENSITY = flag(1107, "SIMULATE_DENSITY", false, "Simulate smoke density").still();
  const Condition has_density = on(SIMULATE_DENSITY);
  Flag CACHE_DENSITY = flag(1295, "CACHE_DENSITY", true, "Store the density in the cache")
                           .changes(Changes::kFrames)
                           .still()
                           .enabled_if(has_density);
  Real BUOYANCY_DENSITY = real(1004, "BUOYANCY_DENSITY", 1000, 0, kUnbounded, kAcceleration,
                               "Acceleration of gas where the density is 1 or more, along "
                               "direction_density: dense gas falls by default. 0: it has no "
                               "weight; with direction_density [0, 1, 0] it rises by itself")
                              .enabled_if(has_density);
  Vector DIRECTION_DENSITY = vector(1121, "DIRECTION_DENSITY", {0, -1, 0}, "",
                                    "Direction in which density accelerates the gas")
                                 .enabled_if(has_density);
  Real DECAY_DENSITY =
      real(1015, "DECAY_DENSITY", 0, 0, 1, kPartPerFrame, "Fraction of the density that disappears")
          .enabled_if(has_density);
  Real DIFFUSION_DENSITY = real(1132, "DIFFUSION_DENSITY", 0, 0, kUnbounded, kDiffusionUnit,
                                "How fast density spreads through still gas and blurs")
                               .enabled_if(has_density);
  Flag CONSERVE_DENSITY =
      flag(1430, "CONSERVE_DENSITY", false,
           "Keep the total amount of density while gas moves: smoke in a closed room neither fades "
           "nor grows by itself, and smoke that expands gets thinner. A little slower")
          .enabled_if(has_density);
};

struct TemperatureParameters : DensityParameters {
  Flag SIMULATE_TEMPERATURE =
      flag(1108, "SIMULATE_TEMPERATURE", true, "Simulate temperature").still();
  const Condition has_temperature = on(SIMULATE_TEMPERATURE);
  Flag CACHE_TEMPERATURE =
      flag(1294, "CACHE_TEMPERATURE", true, "Store the temperature in the cache")
          .changes(Changes::kFrames)
          .still()
          .enabled_if(has_temperature);
  Real BUOYANCY_TEMPERATURE =
      real(1005, "BUOYANCY_TEMPERATURE", 600, 0, kUnbounded, kAcceleration,
           "Acceleration of gas where the temperature is 1 or more: how fast hot gas rises. Smoke "
           "rises where this pull is stronger than that of "
           "buoyancy_density")
          .enabled_if(has_temperature);
  Vector DIRECTION_TEMPERATURE = vector(1122, "DIRECTION_TEMPERATURE", {0, 1, 0}, "",
                                        "Direction in which temperature accelerates the gas")
                                     .enabled_if(has_temperature);
  Real DECAY_TEMPERATURE = real(1013, "DECAY_TEMPERATURE", 0, 0, 1, kPartPerFrame,
                                "Fraction of the temperature that is lost: how fast gas cools")
                               .enabled_if(has_temperature);
  Real DIFFUSION_TEMPERATURE = real(1012, "DIFFUSION_TEMPERATURE", 0, 0, kUnbounded, kDiffusionUnit,
                                    "How fast temperature spreads through still gas and blurs")
                                   .enabled_if(has_temperature);
  Flag CONSERVE_TEMPERATURE =
      flag(1431, "CONSERVE_TEMPERATURE", false,
           "Keep the total amount of temperature while gas moves: gas that expands cools")
          .enabled_if(has_temperature);
};

}  // namespace nbx
