#include "C4D/run/state_loader.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"

namespace nbx {

/// Reads the state that the parameters name, if any. A run that continues has its state already.
void StateLoader::read() {
  if (!origin_.continues) {
    const ParameterReader p(run_.scene.volume());
    if (!p(OVOLUME.LOAD_STATE)) return;
    const std::string path = run_.scene.document().Resolve(p(OVOLUME.STATE_FILE)).path;
    auto state = std::make_unique<SavedState>();
    if (const Outcome done = read_state(*state, path))
      origin_.state = std::move(state);
    else
      origin_.no_state = "there is no state to continue from: " + path + ": " + done.reason();
  }
  if (!origin_.state)
    run_.front_end.warn(origin_.no_state + "; the run starts at frame " +
                        std::to_string(run_.times.now.frame()));
}

void StateLoader::load() {
  read();
  if (!origin_.state) return;
  const ParameterReader p(run_.scene.volume());
  const bool keeps_time = origin_.continues || p(OVOLUME.STATE_CONTINUE_TIME);
  const bool has_gas = run_.sim.load_state(run_.scene, origin_.state->frame);
  if (keeps_time) {
    run_.times.now.time = origin_.state->frame.frameTime.time;
    beginning_ = Beginning::kContinued;
  } else if (has_gas) {
    beginning_ = Beginning::kFromState;
  }
  warn_of_missing_grids(has_gas);
}

void StateLoader::warn_of_missing_grids(bool has_gas) {
  const SavedState& state = *origin_.state;
  if (!has_gas)
    run_.front_end.warn(state.path + " has grids of less than 3 voxels: " +
                        (continued() ? "the run continues without gas" : "a new run starts"));
  else if (!FluidSystem::has_velocity(state.frame))
    run_.front_end.warn(state.path +
                        " holds no velocity: its gas starts at rest, or with the wind");
}

void StateLoader::finish(StateSaver& saver) {
  StepClock& clock = run_.sim.clock;
  const Fraction scale = time_scale(run_.scene.volume());
  // A run that continues keeps the clock of its state, since the time scale may have been animated.
  if (!continued()) clock.sim_time.time = run_.times.now.time * scale;
  clock.sim_time.length = run_.times.now.length * scale;
  if (is_new()) return;
  if (continued()) restore_noise(scale);
  restore_wind();
  warn_of_differences();
  // The last substep left the document at a time that is rounded in this way.
  evaluate(run_.scene.document(), run_.times.now.time.value());
  run_.scene.remember_solids();
  saver.inherit(origin_.state->path, origin_.continues);
  origin_.state.reset();
}

void StateLoader::restore_noise(const Fraction& scale) {
  const std::optional<StateNotes>& notes = origin_.state->notes;
  if (notes && notes->noise)
    run_.sim.restore_noise(*notes->noise);
  else
    run_.sim.catch_up_noise((run_.times.start.time * scale).value());
}

void StateLoader::restore_wind() {
  const SavedState& state = *origin_.state;
  if (state.notes) {
    run_.sim.fluid().set_wind_seen(state.notes->wind);
  } else if (FluidSystem::has_velocity(state.frame)) {
    const double dt = run_.sim.clock.sim_time.length.value();
    const StepSettings now = run_.scene.read_settings(run_.sim.view(), dt);
    run_.sim.fluid().set_wind_seen(now.domain.wind);
  }
}

void StateLoader::warn_of_differences() {
  if (!origin_.state->notes) return;
  const StateNotes& notes = *origin_.state->notes;
  const std::string scene = differences(notes.scene, scene_values(run_.scene.volume()));
  if (!scene.empty()) run_.front_end.warn("the scene isn't that of the state: " + scene);
  if (!origin_.continues || notes.frames.empty()) return;
  const std::string frames = differences(notes.frames, frame_values(run_.scene.volume()));
  if (!frames.empty())
    run_.front_end.warn("the earlier frames were stored with other settings: " + frames);
}

}  // namespace nbx
