#include "C4D/run/state_saver.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr int kStatesKept = 2;  // besides the state of the last run's end

}  // namespace

void StateSaver::inherit(const std::string& path, bool continues) {
  own_ = {path};
  if (continues) continued_from_ = run_.times.now.frame();
}

void StateSaver::save_last() {
  if (run_.sim.steps_remaining() > 0) {
    LogMessage() << "NOT storing simulation state - remaining steps > 0";
    return;
  }
  save(last_state_file(run_.sim.sink.target_cache->directory()));
}

void StateSaver::save_if_due() {
  const std::int32_t every = ParameterReader(run_.scene.volume())(OVOLUME.SAVE_STATE_EVERY);
  const int frame = run_.times.now.frame();
  const bool last = run_.times.at_end() || run_.front_end.wanted_stop() != Stop::kNo;
  if (every < 1 || frame % every != 0 || last) return;
  // A run that continues from a state makes only the frames after it, so all others must exist.
  BFS& store = *run_.sim.sink.target_cache;
  Outcome saved = store.finish_writes();
  if (saved) saved = run_.stale.update();
  if (saved)
    save(state_file(store.directory(), frame));
  else
    run_.front_end.warn("the state of frame " + std::to_string(frame) +
                        " isn't saved, since frames before it aren't saved yet: " + saved.reason());
}

void StateSaver::save(const std::string& path) {
  // Without the break test, since the state of a stopped run needs the whole scene too.
  evaluate(run_.scene.document(), to_base_time(run_.times.now.time));
  host::BaseObject& volume = run_.scene.volume();
  const StateNotes notes{run_.sim.fluid().wind_seen(), scene_values(volume, run_.sim.params.upres),
                         frame_values(volume), run_.times.range(), run_.sim.noise_state()};
  if (const Outcome written = write_state(path, run_.sim, run_.times.now, notes); !written) {
    run_.front_end.warn("the state to continue from isn't saved: " + written.reason());
    return;
  }
  own_.insert(path);
  remove_others();
}

/// Removes the states of other runs, and of this one all but the last few.
void StateSaver::remove_others() {
  const std::string directory = run_.sim.sink.target_cache->directory();
  remove_unfinished_states(directory);
  int kept = 0;
  for (const StateFile& state : list_states(directory)) {
    const bool at_end = state.path == last_state_file(directory);
    if (!is_own(state) || (!at_end && ++kept > kStatesKept)) remove_state(state.path);
  }
}

bool StateSaver::is_own(const StateFile& state) const {
  const bool came_before = continued_from_ && state.frame && *state.frame <= *continued_from_;
  return came_before || own_.contains(state.path);
}

}  // namespace nbx
