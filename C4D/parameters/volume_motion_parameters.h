// Wind, drag, swirls and noise.
#pragma once

#include "C4D/parameters/volume_fire_parameters.h"

namespace nbx {

struct MotionParameters : BurnParameters {
  Vector WIND_DIRECTION =
      vector(1247, "WIND_DIRECTION", {1, 0, 0}, "", "Direction in which the wind blows");
  Real WIND_SPEED =
      real(1248, "WIND_SPEED", 0, 0, kUnbounded, "units/s", "Speed of the air around the domain");
  Flag WIND_WORLD = flag(1276, "WIND_WORLD", false,
                         "The air moves with the object; otherwise a moving object feels its own "
                         "movement as wind");
  Real DRAG = real(1262, "DRAG", 0, 0, 1, kPartPerFrame,
                   "Fraction of the velocity that is lost: slows the gas down");
  Flag CLAMP_VELOCITY = flag(1249, "CLAMP_VELOCITY", false,
                             "Limit speeds so that no gas crosses the whole simulated region in a "
                             "frame");
  Real VORTICITY = real(1003, "VORTICITY", 0, 0, kUnbounded, "",
                        "Strength of vorticity confinement: keeps small swirls alive; high values "
                        "look restless");
  Real PARTICLE_ADVECTION = real(1260, "PARTICLE_ADVECTION", 0, 0, kUnbounded, "",
                                 "How much of the cached velocity particles in the domain follow; "
                                 "0: none, 1: they move with the gas");
};

struct NoiseParameters : MotionParameters {
  Real NOISE_STRENGTH = real(1146, "NOISE_STRENGTH", 0, 0, kUnbounded, "units/s",
                             "Typical speed of the largest eddies that noise adds; 0: no noise");
  Real NOISE_SIZE_MIN = real(1356, "NOISE_SIZE_MIN", 2, 0, 1e6, "units",
                             "Size of the smallest eddies, at least a voxel");
  Real NOISE_SIZE_MAX =
      real(1357, "NOISE_SIZE_MAX", 10, 0, 1e6, "units", "Size of the largest eddies");
  Real NOISE_PERSISTENCE = real(1358, "NOISE_PERSISTENCE", 0.56, 0, 4, "",
                                "Strength of eddies relative to those of twice the size: higher "
                                "values add fine detail; at 0.5 all sizes have the same speed");
  Real NOISE_PERIOD = real(1261, "NOISE_PERIOD", 0, 0, kUnbounded, "s",
                           "Time in which the eddies change; 0: they don't change");
  Choice<VolumeChannel> NOISE_DRIVER =
      channel(1321, "NOISE_DRIVER", OVOLUME_CHANNEL_NONE,
              "Channel that scales the noise, by noise_curve; none: the same noise everywhere");
  Curve NOISE_CURVE = curve(1322, "NOISE_CURVE", {{0, 0}, {1, 1}},
                            "Maps the driver's value to the factor of the noise")
                          .enabled_if(chosen(NOISE_DRIVER));
};

}  // namespace nbx
