// The parameters of the noise operators: amounts and sizes.
#pragma once

#include "math/rational_spline.h"
#include "math/vector.h"

namespace nbx {

struct NoiseParams {
  float time = 0;                // seconds
  float frequency = 1;           // of the first band: noise cells per voxel
  float time_frequency = 0;      // tile changes per second; 0 = a fixed tile
  float amplitude = 0;           // of the first band
  float bands = 1;               // may be fractional: the last band then comes in gradually
  float persistence = 0.56f;     // amplitude of one band over that of the band before
  Vec3f offset;                  // added to the cell position, in voxels
  int driver_key = 0;            // channel that scales the noise; 0 = none
  RationalSpline driver_spline;  // maps the driver's value to the scale
};

/// Sets frequency, amplitude, bands and time_frequency from the sizes of the smallest and the
/// largest eddy, in either order; no eddy gets smaller than a voxel. `strength` is the speed that
/// the largest eddies add, `period` the seconds between tile changes, or 0 for a fixed tile. All
/// sizes are in one unit, and `voxel_size` is above 0.
void set_noise_scale(NoiseParams& params, double size_a, double size_b, double voxel_size,
                     double strength, double period);

}  // namespace nbx
