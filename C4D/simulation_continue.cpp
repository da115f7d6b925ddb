// Going on from a state: what a run takes from it, and how the scene comes to its time.
#include <cmath>
#include <limits>

#include "C4D/host_conversion.h"
#include "C4D/parameter_reader.h"
#include "C4D/scene_settings.h"
#include "C4D/simulation_thread.h"
#include "C4D/volume_grid.h"
#include "C4D/volume_parameters.h"
#include "util/log.h"

namespace nbx {

/// Takes the state that the parameters name, if any.
SimulationThread::Origin SimulationThread::load_state() {
  const ParameterReader p(*object_);
  if (!continue_run_ && !p.flag(OVOLUME_LOAD_STATE)) return Origin::kAnew;
  const std::string path = continue_run_
                               ? last_state_file(sim_->settings.target_cache->directory())
                               : object_->GetDocument().Resolve(p.file(OVOLUME_STATE_FILE)).path;
  SimFrame frame;
  std::string reason;
  if (!read_state(path, frame, reason)) {
    LogMessage() << "Failed to load simulation state from '" << path << "'";
    warn("there is no state to go on from, " + path + ": " + reason + "; the run starts at frame " +
         std::to_string(time_.frame()));
    return Origin::kAnew;
  }
  state_loaded_ = sim_->load_state(*this, frame);
  if (!state_loaded_) warn(path + " has grids of less than 3 voxels: the run goes on without gas");
  state_notes_ = read_notes(path, frame.frameTime);
  if (!continue_run_ && !p.flag(OVOLUME_STATE_CONTINUE_TIME)) return Origin::kFromState;
  time_.time = frame.frameTime.time;
  return Origin::kContinued;
}

/// Takes what the frame doesn't hold, with the document at the run's time.
void SimulationThread::finish_state(Origin origin) {
  SimSettings& s = sim_->settings;
  const Fraction scale = time_scale(*object_);
  // A state that goes on keeps its clock: the scale of time may have changed on the way to it.
  if (!(state_loaded_ && origin == Origin::kContinued)) s.sim_time.time = time_.time * scale;
  s.sim_time.length = time_.length * scale;
  if (!state_loaded_) return;
  if (origin == Origin::kContinued) sim_->catch_up_noise((start_time_.time * scale).value());
  if (state_notes_) {
    sim_->fluid().set_wind_seen(state_notes_->wind);
    const std::string changed = differences(state_notes_->scene, scene_values(*object_));
    if (!changed.empty()) warn("the scene isn't that of the state: " + changed);
  } else {
    read_step_settings(s, *object_, s.sim_time.length.value());
    sim_->fluid().set_wind_seen({s.wind_direction, s.wind_speed});
  }
  evaluate(object_->GetDocument(), time_.time.value());  // as the last substep left it
  solids_->remember_points();
}

/// Steps the document from the run's start to its time as a run would, so that particles stand
/// where they would.
void SimulationThread::pre_roll() {
  const double length = time_.length.value(), voxel = sim_->settings.voxel_size;
  const std::int64_t frames = time_.frame() - start_time_.frame();
  for (std::int64_t f = 0; f < frames && !stop_now_; ++f) {
    const double start = start_time_.time.value() + static_cast<double>(f) * length;
    const int n = source_substeps(*object_, source_tags_, voxel, start, start + length);
    for (int i = 0; i < n; ++i) evaluate(object_->GetDocument(), start + i * length / n);
    if (evaluating_thread()->TestBreak()) stop(true);
  }
}

}  // namespace nbx
