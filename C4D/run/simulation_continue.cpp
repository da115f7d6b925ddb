// Going on from a state: what a run takes from it, and how the scene comes to its time.
#include <cmath>
#include <limits>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_grid.h"
#include "util/log.h"

namespace nbx {

/// Reads the state that the parameters name, if any. That of a run which is continued has been
/// found already.
bool SimulationThread::read_origin() {
  if (!continue_run_) {
    const ParameterReader p(*object_);
    if (!p(OVOLUME.LOAD_STATE)) return false;
    const std::string path = object_->GetDocument().Resolve(p(OVOLUME.STATE_FILE)).path;
    std::string reason;
    state_ = read_state(path, reason);
    no_state_ = "there is no state to go on from: " + path + ": " + reason;
  }
  if (!state_) warn(no_state_ + "; the run starts at frame " + std::to_string(time_.frame()));
  return state_ != nullptr;
}

SimulationThread::Origin SimulationThread::load_state() {
  if (!read_origin()) return Origin::kAnew;
  const ParameterReader p(*object_);
  const bool goes_on = continue_run_ || p(OVOLUME.STATE_CONTINUE_TIME);
  const bool has_gas = sim_->load_state(*this, state_->frame);
  if (!has_gas)
    warn(state_->path + " has grids of less than 3 voxels: " +
         (goes_on ? "the run goes on without gas" : "a new run starts"));
  else if (!FluidSystem::has_velocity(state_->frame))
    warn(state_->path + " holds no velocity: its gas starts at rest, or with the wind");
  if (!goes_on) return has_gas ? Origin::kFromState : Origin::kAnew;
  time_.time = state_->frame.frameTime.time;
  return Origin::kContinued;
}

/// Takes what the frame doesn't hold, with the document at the run's time.
void SimulationThread::finish_state(Origin origin) {
  SimSettings& s = sim_->settings;
  const Fraction scale = time_scale(*object_);
  // A state that goes on keeps its clock: the scale of time may have changed on the way to it.
  if (origin != Origin::kContinued) s.sim_time.time = time_.time * scale;
  s.sim_time.length = time_.length * scale;
  if (origin == Origin::kAnew) return;
  const std::optional<StateNotes>& notes = state_->notes;
  if (origin == Origin::kContinued) {
    if (notes && notes->noise)
      sim_->restore_noise(*notes->noise);
    else
      sim_->catch_up_noise((start_time_.time * scale).value());
  }
  if (notes) {
    sim_->fluid().set_wind_seen(notes->wind);
    tell_differences(*notes);
  } else if (FluidSystem::has_velocity(state_->frame)) {
    read_step_settings(s, *object_, s.sim_time.length.value());
    sim_->fluid().set_wind_seen({s.wind_direction, s.wind_speed});
  }
  evaluate(object_->GetDocument(), time_.time.value());  // as the last substep left it
  solids_->remember_points();
  own_states_ = {state_->path};
  if (continue_run_) continued_from_ = time_.frame();
  state_.reset();
}

void SimulationThread::tell_differences(const StateNotes& notes) {
  const std::string scene = differences(notes.scene, scene_values(*object_));
  if (!scene.empty()) warn("the scene isn't that of the state: " + scene);
  if (!continue_run_ || notes.frames.empty()) return;
  const std::string frames = differences(notes.frames, frame_values(*object_));
  if (!frames.empty()) warn("the frames before hold other things: " + frames);
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
