// The pressure projection: makes the velocity free of divergence.
#pragma once

#include <array>

#include "math/multigrid_solver3d.h"
#include "simulation/sim_settings.h"

namespace nbx {

/// What `project` works on.
struct ProjectionFields {
  Field<float>*U = nullptr, *V = nullptr, *W = nullptr;  // changed in place
  const Field<float>* phi = nullptr;                     // solids, or null
  const Field<float>* source = nullptr;                  // added to the right-hand side, or null
  const Field<float>*Us = nullptr, *Vs = nullptr, *Ws = nullptr;  // of the solids; null: they rest
};

/// Builds the right-hand side, solves for the pressure and subtracts its gradient. With solids an
/// iteration of single V-cycles that respects their faces comes first. `closed` are the walls (see
/// closed_faces); `expected_cycles` serves the progress. Returns what the last solve achieved. A
/// grid below 3 cells on an axis is left alone. Throws Exception for a NaN.
SolveResult project(MultigridSolver3D& solver, const ProjectionFields& fields,
                    const SimSettings& settings, const std::array<int, 6>& closed,
                    int expected_cycles, SolverProgress* progress);

}  // namespace nbx
