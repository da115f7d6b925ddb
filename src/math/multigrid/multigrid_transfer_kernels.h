// Reordering of rows, and interpolation from the coarser level, on one plane; compiled once per
// instruction set (util/isa.h).
#pragma once

#include "math/multigrid/multigrid_level.h"

namespace nbx {

struct MultigridTransferKernels {
  /// Reorders the rows of a plane from natural to split, and back. `row` is scratch for one row.
  void (*split_plane)(float* plane, float* row, int nx, int ny);
  void (*merge_plane)(float* plane, float* row, int nx, int ny);

  /// Plane `coarse_k` of the coarse solution, interpolated in x and y to a plane of the fine grid
  /// with split rows. The coarse ghosts follow from the faces; coarse_k may be that of a ghost
  /// plane.
  void (*expand_plane)(float* out, const LevelGrid& fine, const LevelGrid& coarse, int coarse_k);

  /// x += a
  void (*add)(float* x, const float* a, int n);
  /// x += (a + b) / 2
  void (*add_mean)(float* x, const float* a, const float* b, int n);
  /// x += a + (b - a) t
  void (*add_between)(float* x, const float* a, const float* b, double t, int n);
  /// x += scale (a + (b - a) t), for levels with solids
  void (*add_scaled)(float* x, const float* scale, const float* a, const float* b, double t, int n);
};

const MultigridTransferKernels& multigrid_transfer_kernels();

}  // namespace nbx
