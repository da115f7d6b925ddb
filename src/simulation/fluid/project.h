// The pressure projection: makes the velocity free of divergence.
#pragma once

#include "math/multigrid_solver3d.h"
#include "simulation/domain.h"

namespace nbx {

/// What `project` works on.
struct ProjectionFields {
  Field<float>*U = nullptr, *V = nullptr, *W = nullptr;  // changed in place
  const Field<float>* phi = nullptr;                     // solids, or null
  const Field<float>* source = nullptr;                  // added to the right-hand side, or null
  const Field<float>*Us = nullptr, *Vs = nullptr, *Ws = nullptr;  // of the solids; null: they rest
};

/// When to stop.
struct ProjectionLimits {
  double tolerance = 0.01;    // largest residual, 1/s
  int max_cycles = 10;        // V-cycles of the final solve
  int solid_iterations = 10;  // passes of the iteration around solids
};

/// Builds the right-hand side, solves for the pressure and subtracts its gradient. With solids, an
/// iteration of single V-cycles that keeps their faces comes first. `expected_cycles` is for the
/// progress. Returns what the final solve achieved. A grid below 3 cells on an axis is left alone.
/// Throws Exception for a NaN.
SolveResult project(MultigridSolver3D& solver, const ProjectionFields& fields, const Domain& domain,
                    const ProjectionLimits& limits, int expected_cycles, SolverProgress* progress);

}  // namespace nbx
