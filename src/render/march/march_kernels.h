// The inner loops of ray marching: look-ups at points of each lane's own, and attenuation. Compiled
// once per instruction set (util/isa.h).
#pragma once

#include "math/lanes/kernel_field.h"

namespace nbx {

/// All arrays are aligned to 64 bytes and hold kBlock floats; the first n count, but those up to
/// the next whole row of lanes are read and written too.
struct MarchKernels {
  using Sample = void (*)(float* out, const KernelField& field, const float* x, const float* y,
                          const float* z, int n);
  Sample linear;       // trilinear; 0 outside of [0, n-1] and for NaN
  Sample clamped;      // trilinear at the nearest point of the grid; needs 2 cells on each axis
  Sample catmull_rom;  // these two need 4 cells on each axis
  Sample bspline;

  /// loss = 1 - exp(-depth), for depths of at least 0, to a relative 2e-6.
  void (*absorb)(float* loss, const float* depth, int n);

  /// Colors of a table of count >= 2 entries a channel, evenly over values 0 to 1 and linear
  /// between them. Behind the last entry of each channel stands another float.
  void (*table)(float* const* out, const float* const* channels, int count, const float* v, int n);
};

const MarchKernels& march_kernels();

}  // namespace nbx
