// How much memory a run may need.
#pragma once

#include "simulation/frame_sink.h"
#include "simulation/solver_params.h"

namespace nbx {

/// Bytes of all fields that a run can hold at once in a domain of `cells` that is full of gas. A
/// double, since a domain beyond all memory has more bytes than an integer can count.
double workspace_bytes(const SolverParams& params, const FrameSink& sink, const Vec3d& cells,
                       bool has_solids);

}  // namespace nbx
