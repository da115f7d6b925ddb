// The curl of detail noise at many points. Compiled once per instruction set (util/isa.h).
#pragma once

namespace nbx {

/// A tile of wavelet noise, periodic over its edge, which is a power of two. Each row along x
/// repeats its first three floats at the end.
struct NoiseTile {
  const float* data;
  int edge;
};

/// See DetailNoise.
struct NoiseBands {
  float frequency, amplitude, octaves, gain;
};

struct DetailNoiseKernels {
  /// (dx, dy, dz) as in DetailNoise::curl, at points in voxels. Arrays as for MarchKernels.
  /// Beyond 2^31 noise cells the result is arbitrary noise.
  void (*curl)(float* const* d, const NoiseTile& tile, const NoiseBands& bands, const float* x,
               const float* y, const float* z, int n);
};

const DetailNoiseKernels& detail_noise_kernels();

}  // namespace nbx
