// The vector operations of the outer iteration (outer_iteration.h) on n floats in a row, compiled
// once per instruction set (util/isa.h). Sums are in double and in a fixed order, so they have the
// same bits for every instruction set.
#pragma once

namespace nbx {

/// What the outer iteration needs to know of a new direction.
struct DirectionProducts {
  double rq = 0, qq = 0;
};

struct MultigridKrylovKernels {
  double (*dot)(const float* a, const float* b, int n);
  /// p = z, q = Az; the products are r q and q q.
  DirectionProducts (*start)(float* p, float* q, const float* z, const float* Az, const float* r,
                             int n);
  /// p = z - beta p, q = Az - beta q; the products are r q and q q of the new q.
  DirectionProducts (*turn)(float* p, float* q, const float* z, const float* Az, const float* r,
                            float beta, int n);
  /// x += alpha p, r -= alpha q; returns the largest magnitude of the new r, NaN if there is one.
  float (*advance)(float* x, float* r, const float* p, const float* q, float alpha, int n);
};

const MultigridKrylovKernels& multigrid_krylov_kernels();

}  // namespace nbx
