// The half kernel of the heat equation for one step, integrated over voxels.
#pragma once

#include "math/field.h"

namespace nbx {

/// Kept between steps, and rebuilt only when what made it changes.
class DiffusionFilter {
 public:
  /// The kernel that `convolve3D` takes: weight at distance d along x, the whole kernel sums to 1.
  /// It has at most `longest` entries, the longest axis of the grid, but never fewer than 3.
  /// `diffusion` (simulation units squared per second), `dx` and `dt` are above 0.
  const Field<float>& kernel(double dx, double dt, double diffusion, int longest);

  void release() { *this = DiffusionFilter(); }

 private:
  Field<float> kernel_;
  double dx_ = 0, dt_ = 0, diffusion_ = 0;
  int longest_ = 0;
};

}  // namespace nbx
