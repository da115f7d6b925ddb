// Reads an emitter tag into the record of one source in one substep.
#pragma once

#include "host/interface/scene.h"
#include "simulation/sim_settings.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

/// The tag's parameters at the document's time, for a substep of `frames` document frames. Amounts
/// to add are scaled by `frames`.
SimulationObjectParameters source_parameters(const host::BaseTag& tag, const SimSettings& settings,
                                             double frames);

/// The number of the material channel that scales the tag's source on the surface; -1 for none.
int surface_channel(const host::BaseTag& tag);

}  // namespace nbx
