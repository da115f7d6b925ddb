// The curl of detail noise at many points. Compiled once per instruction set (util/isa.h).
#pragma once

namespace nbx {

/// A tile of wavelet noise, periodic over its edge, a power of two. Each row along x holds three
/// more floats, its first ones again.
struct NoiseTile {
  const float* data;
  int edge;
};

/// See DetailNoise.
struct NoiseBands {
  float frequency, amplitude, octaves, gain;
};

struct DetailNoiseKernels {
  /// (dx, dy, dz) = curl of three noise potentials at points in voxels. Arrays as for MarchKernels.
  /// Coordinates beyond 2^31 noise cells give some noise or other.
  void (*curl)(float* const* d, const NoiseTile& tile, const NoiseBands& bands, const float* x,
               const float* y, const float* z, int n);
};

const DetailNoiseKernels& detail_noise_kernels();

}  // namespace nbx
