// The inner loops of advection, compiled once per instruction set (util/isa.h). Each choice has a
// loop of its own, so that no cell branches on it.
#pragma once

#include <cstddef>

#include "math/lanes/kernel_field.h"
#include "math/lanes/near_marks.h"

namespace nbx {

/// What a tracer reads. The velocity must lie on the faces that belong to the advected grid.
struct TraceParams {
  KernelField velocity[3];
  int nx, ny, nz;  // the advected grid
  double dt, dx, tolerance;
};

/// Traced positions of a run of cells along x, one array per coordinate.
struct TracedRun {
  const float *x, *y, *z;
};

struct AdvectionKernels {
  /// Traces n samples from (i, j, k) on; x, y, z receive the positions.
  using Trace = void (*)(float* x, float* y, float* z, const TraceParams& params, int i, int j,
                         int k, int n);
  Trace trace[2][4];  // by tracer and lookup

  /// The marks of the segments of a row.
  void (*mark)(std::uint8_t* marks, const float* row, int n);

  /// dst[0 .. n) = src sampled at the traced positions.
  using SemiLagrangian = void (*)(float* dst, const KernelField& src, const NearMarks& src_marks,
                                  const TracedRun& back, int n);
  SemiLagrangian semi_lagrangian[2];  // linear, cubic

  /// dst[first .. first + n) = the correction of `hat`.
  using MacCormack = void (*)(float* dst, const KernelField& src, const KernelField& hat,
                              const NearMarks& hat_marks, const TracedRun& back,
                              const TracedRun& fwd, std::size_t first, int n);
  MacCormack maccormack[2];
};

const AdvectionKernels& advection_kernels();

}  // namespace nbx
