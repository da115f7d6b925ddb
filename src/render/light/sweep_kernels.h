// The inner loop of the sweep solver: a row of rays through a row of cells. Compiled once per
// instruction set (util/isa.h).
#pragma once

#include <cstdint>

namespace nbx {

/// A row of n cells. Extinctions are per meter. `source` is emission per meter divided by
/// extinction, and 0 without extinction.
struct SweepCells {
  const float* extinction;
  const float* scattering[3];
  const float* source[3];
  float* caught[3];
};

/// The rays in those cells: their light, and how often each has left the grid sideways so far.
struct SweepRays {
  float* light[3];
  std::int32_t* generation;
};

struct SweepKernels {
  /// Rays whose generation is lower than `generation` have wrapped around since. They start again
  /// as new rays, without light.
  void (*restart)(const SweepRays& rays, std::int32_t generation, int n);

  /// Carries the light over `length` meters of each cell,
  ///
  ///     caught += L (1 - e^(-scattering l)),   L = L e^(-extinction l) + S (1 - e^(-extinction l))
  ///
  /// the exact solution for a constant source within the cell.
  void (*cross)(const SweepCells& cells, const SweepRays& rays, float length, int n);
};

const SweepKernels& sweep_kernels();

}  // namespace nbx
