#include "C4D/run/state_loader.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "cache/grid_type.h"

namespace nbx {

/// Reads the state that the parameters name, if any. A run that continues has its state already.
void StateLoader::read() {
  if (!origin_.continues) {
    const ParameterReader p(run_.scene.volume());
    // A state of the volume is one of its coarse run.
    if (!p(OVOLUME.LOAD_STATE) || run_.sim.params.upres) return;
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
  else
    warn_of_missing_channels();
}

/// Ordinary frames hold less than the simulation needs.
void StateLoader::warn_of_missing_channels() {
  const SimFrame& frame = origin_.state->frame;
  std::string missing, cure;
  const auto add = [&](const std::string& channel) {
    missing += (missing.empty() ? "" : ", ") + channel;
    cure += (cure.empty() ? "cache_" : ", cache_") + channel;
  };
  const bool has_velocity = run_.sim.params.upres || FluidSystem::has_velocity(frame);
  if (!has_velocity) add("velocity");
  const SolverParams& params = run_.sim.params;
  for (const int key : params.simulated_channels)
    if (const int grid = params.channel_params.at(key).grid_type; !frame.grids.contains(grid))
      add(grid_type_name(grid));
  if (missing.empty()) return;
  run_.front_end.warn(
      origin_.state->path + " contains no " + missing + ": " +
      (has_velocity ? "the run starts without that" : "its gas starts at rest, or with the wind") +
      "; next time, set " + cure + ", or use save_state_every");
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
  const std::optional<StateNotes>& notes = origin_.state->notes;
  if (!notes && !origin_.scene) return;
  const SceneRecord then = notes ? SceneRecord{notes->scene, notes->frames} : *origin_.scene;
  host::BaseObject& volume = run_.scene.volume();
  const SceneRecord now{scene_values(volume, run_.sim.params.upres,
                                     notes ? ComparedWith::kNotes : ComparedWith::kSavedScene),
                        frame_values(volume)};
  const std::string frame = std::to_string(origin_.state->frame.frameTime.frame());
  for (const std::string& line : differences(then.scene, now.scene))
    run_.front_end.warn("the scene has changed since frame " + frame + " was simulated: " + line);
  if (!origin_.continues || then.frames.empty()) return;
  for (const std::string& line : differences(then.frames, now.frames))
    run_.front_end.warn("the earlier frames were stored with other settings: " + line);
}

}  // namespace nbx
