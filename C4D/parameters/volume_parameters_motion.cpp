#include "C4D/parameters/volume_parameter_groups.h"

namespace nbx {

using namespace table;

namespace {

ParameterList noise_parameters() {
  return {
      real(OVOLUME_NOISE_STRENGTH, "OVOLUME_NOISE_STRENGTH", 0, 0, kUnbounded, "units/s",
           "Typical speed of the largest eddies that noise adds; 0: none"),
      real(OVOLUME_NOISE_SIZE_MIN, "OVOLUME_NOISE_SIZE_MIN", 2, 0, 1e6, "units",
           "Size of the smallest eddies; a voxel at least"),
      real(OVOLUME_NOISE_SIZE_MAX, "OVOLUME_NOISE_SIZE_MAX", 10, 0, 1e6, "units",
           "Size of the largest eddies"),
      real(OVOLUME_NOISE_PERSISTENCE, "OVOLUME_NOISE_PERSISTENCE", 0.56, 0, 4, "",
           "Noise of one size over that of twice the size; at 0.5 they have equal speeds"),
      real(OVOLUME_NOISE_PERIOD, "OVOLUME_NOISE_PERIOD", 0, 0, kUnbounded, "s",
           "Time in which the eddies change; 0: they stay"),
      channel_choice(OVOLUME_NOISE_DRIVER, "OVOLUME_NOISE_DRIVER",
                     "Channel that scales the noise; none: it is the same everywhere"),
      curve(OVOLUME_NOISE_CURVE, "OVOLUME_NOISE_CURVE", {{0, 0}, {1, 1}},
            "From the driver's value to the factor of the noise"),
  };
}

}  // namespace

ParameterList motion_parameters() {
  ParameterList all{
      vector(OVOLUME_WIND_DIRECTION, "OVOLUME_WIND_DIRECTION", {1, 0, 0}, "",
             "Where the wind blows to"),
      real(OVOLUME_WIND_SPEED, "OVOLUME_WIND_SPEED", 0, 0, kUnbounded, "units/s",
           "Speed of the air around the domain"),
      flag(OVOLUME_WIND_WORLD, "OVOLUME_WIND_WORLD", false,
           "The air moves with the object; else a moving object feels it as wind"),
      real(OVOLUME_DRAG, "OVOLUME_DRAG", 0, 0, 1, kPartPerFrame,
           "Part of the velocity that is lost"),
      flag(OVOLUME_CLAMP_VELOCITY, "OVOLUME_CLAMP_VELOCITY", false,
           "No gas crosses the whole simulated region within a frame"),
      real(OVOLUME_VORTICITY, "OVOLUME_VORTICITY", 0, 0, kUnbounded, "",
           "Strength with which small swirls are kept alive"),
      real(OVOLUME_PARTICLE_ADVECTION, "OVOLUME_PARTICLE_ADVECTION", 0, 0, kUnbounded, "",
           "Share of the cached velocity that particles in the domain follow; 0: none"),
  };
  for (auto& info : noise_parameters()) all.push_back(std::move(info));
  return all;
}

}  // namespace nbx
