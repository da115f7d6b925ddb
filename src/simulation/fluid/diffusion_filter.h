// The half kernel of the heat equation for one step, integrated over voxels.
#pragma once

#include "math/field.h"

namespace nbx {

/// Kept between steps, and rebuilt only when its parameters change.
class DiffusionFilter {
 public:
  /// The kernel for `convolve3D`: entry d is the weight at distance d, and the whole kernel sums
  /// to 1. It has at most `longest` entries, the longest axis of the grid, but never fewer than 3.
  /// `diffusion` (simulation units squared per second), `dx` and `dt` are above 0.
  const Field<float>& kernel(double dx, double dt, double diffusion, int longest);

  void release() { *this = DiffusionFilter(); }

 private:
  Field<float> kernel_;
  double dx_ = 0, dt_ = 0, diffusion_ = 0;
  int longest_ = 0;
};

}  // namespace nbx
