// The iteration around the V-cycles where walls or solids slow them down: the generalized conjugate
// residual method, truncated to one direction (Vinsome, "Orthomin", 1976), with a V-cycle as its
// preconditioner. A step takes the correction z of a V-cycle for the residual r:
//
//     p = z - beta p    q = A z - beta q    beta = (A z, q) / (q, q)    so that the new q is
//     x += alpha p      r -= alpha q        alpha = (r, q) / (q, q)     orthogonal to the old one
//
// It lowers the 2-norm of r as far as p allows. The preconditioner need not be symmetric.
#pragma once

#include "math/field_pool.h"
#include "math/multigrid/multigrid_level.h"

namespace nbx {

/// One solve on the finest level, in fields with split rows. The level's x and b lead to z and r
/// while it lives. Results have the same bits for any number of threads.
class OuterIteration {
 public:
  /// `level` is the finest, with the first guess in x and the right-hand side in b. `b` becomes the
  /// residual of the current x.
  explicit OuterIteration(LevelGrid& level);
  ~OuterIteration();
  OuterIteration(const OuterIteration&) = delete;
  OuterIteration& operator=(const OuterIteration&) = delete;

  /// Sets z to 0. The caller then runs a V-cycle on the level.
  void start_cycle();
  /// Moves x along the direction of the V-cycle and returns the infinity norm of the residual.
  float finish_cycle();

 private:
  LevelGrid& g_;
  float* x_;               // the solution
  FieldHandle z_, p_, q_;  // the level's scratch holds A z
  double q_norm_ = 0;      // (q, q); 0 before the first direction
};

}  // namespace nbx
