// Reads the settings of a run from the parameters of a volume object.
#pragma once

#include "host/interface/scene.h"
#include "simulation/frame_sink.h"
#include "simulation/scene_evaluator.h"

namespace nbx {

/// Reads what is constant over a run: channels, voxel size, sampling, what frames hold. The voxel
/// size must be above 0. `params.upres` is set before.
void read_run_settings(SolverParams& params, FrameSink& sink, const host::BaseObject& volume);

/// The settings of a substep at the document's time: `run` with all that may be animated read
/// again. `dt` is the length of the substep in seconds of simulation time, 0 for the first frame.
/// Moves the document in time and back. Throws Exception if the domain became impossible.
StepSettings read_step_settings(const RunView& run, host::BaseObject& volume, double dt);

/// Seconds of simulation time per second of the document, a fraction in millionths.
Fraction time_scale(const host::BaseObject& volume);

}  // namespace nbx
