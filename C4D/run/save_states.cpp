// The states that a run leaves to go on from: at its end, and on the way if the volume asks for it.
#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/services/host_conversion.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr int kStatesKept = 2;  // beside that of the last run's end

}  // namespace

void SimulationThread::save_last_state() {
  if (sim_->steps_remaining() > 0) {
    LogMessage() << "NOT storing simulation state - remaining steps > 0";
    return;
  }
  save_state(last_state_file(sim_->settings.target_cache->directory()));
}

void SimulationThread::save_state_if_due() {
  const std::int32_t every = ParameterReader(*object_).whole(OVOLUME_SAVE_STATE_EVERY);
  const int frame = time_.frame();
  const bool last = stop_at_frame_end_ || !fraction_less(time_.time, end_time_.time);
  if (every < 1 || frame % every != 0 || last) return;
  // Who goes on from a state makes the frames after it, so all others must be there.
  BFS& store = *sim_->settings.target_cache;
  if (const Outcome saved = store.finish_writes(); saved)
    save_state(state_file(store.directory(), frame));
  else
    warn("the state of frame " + std::to_string(frame) +
         " isn't saved, since frames before it wait to be: " + saved.reason());
}

void SimulationThread::save_state(const std::string& path) {
  // A thread that was told to end may no longer evaluate anything as itself.
  host::BaseDocument& document = object_->GetDocument();
  document.SetTime(to_base_time(time_.time));
  document.ExecutePasses(nullptr, true, true, true);
  const StateNotes notes{sim_->fluid().wind_seen(), scene_values(*object_), frame_values(*object_),
                         run_range(), sim_->noise_state()};
  std::string reason;
  if (!write_state(path, *sim_, time_, notes, reason)) {
    warn("the state to go on from isn't saved: " + reason);
    return;
  }
  own_states_.insert(path);
  remove_other_states();
}

/// States of other runs, and of this one all but the last few.
void SimulationThread::remove_other_states() {
  const std::string directory = sim_->settings.target_cache->directory();
  remove_unfinished_states(directory);
  int kept = 0;
  for (const StateFile& state : list_states(directory)) {
    const bool came_before = continued_from_ && state.frame && *state.frame <= *continued_from_;
    const bool own = came_before || own_states_.contains(state.path);
    const bool at_end = state.path == last_state_file(directory);
    if (!own || (!at_end && ++kept > kStatesKept)) remove_state(state.path);
  }
}

}  // namespace nbx
