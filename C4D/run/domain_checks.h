// Whether a domain can be simulated on this machine.
#pragma once

#include "C4D/settings/volume_grid.h"
#include "simulation/frame_sink.h"
#include "simulation/solver_params.h"
#include "util/outcome.h"

namespace nbx {

/// A failure if no simulation can have this domain, or no frame file can hold it.
Outcome check_domain(const VolumeGrid& grid);

/// A failure, with a log line, if the machine has less memory than the run may need.
Outcome check_memory(const SolverParams& params, const FrameSink& sink, const VolumeGrid& grid,
                     bool has_solids);

}  // namespace nbx
