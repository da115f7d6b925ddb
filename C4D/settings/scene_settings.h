// Brings the parameters of a volume object into the settings of a run.
#pragma once

#include "host/interface/scene.h"
#include "simulation/sim_settings.h"

namespace nbx {

/// What stays the same over a run: channels, voxel, sampling. The voxel's edge must be above 0.
void read_run_settings(SimSettings& settings, const host::BaseObject& volume);

/// What may be animated, as it is at the document's time; `dt` is the substep's length in seconds
/// of simulation time, 0 for the first frame. Moves the document in time and back. Throws Exception
/// if the domain became impossible.
void read_step_settings(SimSettings& settings, host::BaseObject& volume, double dt);

/// The factor of the simulation's clock, a fraction in millionths.
Fraction time_scale(const host::BaseObject& volume);

}  // namespace nbx
