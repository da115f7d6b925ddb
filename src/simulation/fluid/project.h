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
  int solid_iterations = 10;  // cycles of the solve around solids
};

/// What a projection achieved. `residual` is the divergence that it left, in 1/s.
struct [[nodiscard]] Projection : SolveResult {
  int solid_passes = 0;  // cycles of the solve around solids
  /// Volume in cells, per second, that expands where walls and solids close on all sides.
  double confined = 0;
};

/// Builds the right-hand side, solves for the pressure and subtracts its gradient. With solids, a
/// solve that keeps their faces comes first; what it leaves is removed by one that moves them too.
/// Where gas has nowhere to go, the mean of its expansion stays in the velocity. `expected_cycles`
/// is for the progress. A grid below 3 cells on an axis is left alone. Throws Exception for a NaN.
Projection project(MultigridSolver3D& solver, const ProjectionFields& fields, const Domain& domain,
                   const ProjectionLimits& limits, int expected_cycles, SolverProgress* progress);

}  // namespace nbx
