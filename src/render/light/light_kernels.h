// Trilinear look-ups in grids of light at blocks of points. Compiled once per instruction set
// (util/isa.h).
#pragma once

#include <cstdint>

namespace nbx {

/// A grid of light as in Field3, with at least 2 cells on each axis. One float more must be
/// readable after the last cell.
struct KernelLight {
  const float* data;
  int nx, ny, nz;
};

/// Where a block of points lies in a grid of light.
struct LightPlaces {
  static constexpr int kCount = 16;
  alignas(64) std::uint32_t lower[kCount];  // index of the lower corner of the point's cell
  alignas(64) std::int32_t inside[kCount];  // -1, or 0 outside of [0, n - 1] and for NaN
  alignas(64) float fraction[3][kCount];    // of the way to the upper corner, by axis
};

struct LightKernels {
  /// Finds 16 points; `scale` converts their coordinates to cells, in double precision. Outside of
  /// the grid the cell is the first one.
  void (*find)(LightPlaces& places, const KernelLight& grid, double scale, const float* x,
               const float* y, const float* z);

  /// The light of 16 places, in the three channels of `out`; 0 outside.
  void (*linear)(float* const* out, const KernelLight& grid, const LightPlaces& places);
};

const LightKernels& light_kernels();

}  // namespace nbx
