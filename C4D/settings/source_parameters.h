// Reads an emitter tag as the record of one source in one substep.
#pragma once

#include "host/interface/scene.h"
#include "simulation/simulation_object_parameters.h"
#include "simulation/solver_params.h"

namespace nbx {

/// The tag's parameters at the document's time, for a substep that lasts `frames` frames of the
/// document: amounts to add are scaled by it. The grid of the domain and the simulation time are
/// left to the caller.
SimulationObjectParameters source_parameters(const host::BaseTag& tag, const SolverParams& params,
                                             double frames);

/// The number of the material channel that scales the tag's source on the surface; -1 for none.
int surface_channel(const host::BaseTag& tag);

}  // namespace nbx
