// The inner loops of ray marching: look-ups at scattered points, and attenuation. Compiled once per
// instruction set (util/isa.h).
#pragma once

#include "math/lanes/kernel_field.h"
#include "math/lanes/spline_kernels.h"

namespace nbx {

/// What shade_extinction needs of a volume: two channels with their curves. A channel without data
/// is off. See shading.h for the formula.
struct GasChannels {
  struct Channel {
    KernelField field{};
    SplineTable curve{};
    float scale = 0;  // density_scale
  };
  Channel fire, smoke;
  float mask_scale = 0;  // fireMaskScale
};

/// A ray through the gas of one volume: its point at the distance t is origin + t direction.
struct GasRay {
  GasChannels gas;
  double origin[3]{}, direction[3]{};
  float scale = 0;  // sigmaScale
};

/// All arrays are aligned to 64 bytes and hold kBlock floats, of which the first n count. Others,
/// up to a whole row of lanes, are read and written as well.
struct MarchKernels {
  using Sample = void (*)(float* out, const KernelField& field, const float* x, const float* y,
                          const float* z, int n);
  Sample linear;       // trilinear; 0 outside of [0, n-1] and for NaN
  Sample clamped;      // trilinear at the nearest point of the grid; needs 2 cells on each axis
  Sample catmull_rom;  // these two need 4 cells on each axis
  Sample bspline;

  /// The extinction of the gas by the linear filter.
  void (*extinction)(float* out, const GasChannels& gas, const float* x, const float* y,
                     const float* z, int n);

  /// The optical depths of n <= 16 steps of a ray, sampled at start, start + step ...; 0 beyond n.
  void (*depths)(double* depth, const GasRay& ray, double start, double step, int n);

  /// a[i] = origin + t[i] * direction in double precision, for count floats, a multiple of 16.
  void (*place)(float* a, double origin, double direction, const double* t, int count);

  /// loss = 1 - exp(-depth), for depths of at least 0, to a relative 2e-6.
  void (*absorb)(float* loss, const float* depth, int n);

  /// Colors from a table of count >= 2 entries per channel, evenly spaced over values 0 to 1 and
  /// linear in between. One float more must be readable after the last entry of each channel.
  void (*table)(float* const* out, const float* const* channels, int count, const float* v, int n);
};

const MarchKernels& march_kernels();

}  // namespace nbx
