// Smoothing and residual on one plane of a level, compiled once per instruction set (util/isa.h). k
// is the index of an interior plane. Where sweeps read the ghosts of closed faces, each kernel sets
// those that it reads, in its own plane or in the ghost plane beside it. It writes nothing else
// that the same kernel reads on another plane for the same color, so planes can run on any threads.
#pragma once

#include "math/multigrid/multigrid_level.h"

namespace nbx {

struct MultigridRelaxKernels {
  /// One Gauss-Seidel update of the cells whose i + j + k has the parity of `color`.
  void (*smooth_plane)(const LevelGrid& g, int k, int color);
  /// out = A x, and 0 in the ghosts of the rows.
  void (*apply_plane)(float* out, const LevelGrid& g, int k);
  /// The largest magnitude of b - A x; NaN if there is one.
  float (*residual_norm_plane)(const LevelGrid& g, int k);
  /// coarse.b = 2 (b - A x) at the sample points of plane `coarse_k`; coarse.r is scratch.
  void (*restrict_plane)(const LevelGrid& coarse, const LevelGrid& fine, int coarse_k);
};

const MultigridRelaxKernels& multigrid_relax_kernels();

}  // namespace nbx
