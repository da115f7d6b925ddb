// What becomes of an earlier run when a new one starts in its cache: the new one goes on from it,
// replaces it, or leaves it alone. On the main thread.
#include <QDateTime>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/services/host_conversion.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "cache/frame_names.h"

namespace nbx {

namespace {

/// A run saves the scene when it starts, and its state when it ends.
bool a_run_started_after(const SavedState& state, const std::string& directory) {
  return QFileInfo(QString::fromStdString(autosave_file(directory))).lastModified() >
         QFileInfo(QString::fromStdString(state.path)).lastModified();
}

bool has_frames(const std::string& directory, int first, int last) {
  const auto frames = list_frames(directory);
  for (int f = first; f <= last; ++f)
    if (!frames.contains(f)) return false;
  return true;
}

void bring(host::BaseDocument& document, const host::BaseTime& time) {
  document.SetTime(time);
  document.ExecutePasses(nullptr, true, true, true);
}

/// True for the state at the end of a finished run that has all its frames, if the volume's range
/// is that of the run but for an end that has moved out.
bool ends_before_range(const SavedState& state, const TimeRange& range,
                       const std::string& directory) {
  if (!state.notes || !state.notes->range) return false;
  const RunRange& run = *state.notes->range;
  const FrameTime& end = state.frame.frameTime;
  return end.time == run.end && run.start == to_fraction(range.start) &&
         !a_run_started_after(state, directory) && fraction_less(run.end, to_fraction(range.end)) &&
         has_frames(directory, FrameTime{run.start, end.length}.frame(), end.frame());
}

}  // namespace

/// Finds the state that a run is to go on from. Where there is none, an empty cache has nothing to
/// lose by a new run; an earlier run has.
bool SimulationThread::find_origin(const std::string& directory, std::optional<int> at_most) {
  std::string problems;
  state_ = find_state(directory, at_most, problems);
  if (state_) {
    if (!problems.empty())
      dialog_->warn(problems + "; the run goes on from frame " +
                    std::to_string(state_->frame.frameTime.frame()));
    return true;
  }
  no_state_ = "there is no state to go on from";
  if (at_most) no_state_ += " at or before frame " + std::to_string(*at_most);
  no_state_ += ": " + problems;
  const bool anything_to_lose = has_autosave(*object_link_) || !list_frames(directory).empty();
  return !anything_to_lose || dialog_->may_start_over(no_state_);
}

/// Asks what is to become of an earlier run, or goes on from it. False if there is to be no run.
bool SimulationThread::settle_with_earlier_run(const std::string& directory) {
  if (!must_ask_about_cache(*object_link_)) return true;
  if (extends_earlier_run(directory)) return true;
  const OldCache choice =
      dialog_->ask_about_cache(texts::kCacheHoldsRun.title, texts::kCacheHoldsRun.text);
  if (choice == OldCache::kStop) return false;
  if (choice == OldCache::kOverwrite || move_to_new_cache(*object_link_)) return true;
  dialog_->refuse(texts::kNoCacheFolder.title, texts::kNoCacheFolder.text);
  return false;
}

/// A finished run goes on if nothing but its end has changed, since a new run would make the same
/// frames again.
bool SimulationThread::extends_earlier_run(const std::string& directory) {
  host::BaseObject& object = *object_link_;
  std::string ignored;
  auto state = open_state(last_state_file(directory), ignored);
  const TimeRange range = time_range(object);
  if (!state || ParameterReader(object)(OVOLUME.LOAD_STATE) ||
      !ends_before_range(*state, range, directory))
    return false;
  bring(object.GetDocument(), to_base_time(state->frame.frameTime.time));
  const bool same = differences(state->notes->scene, scene_values(object)).empty() &&
                    differences(state->notes->frames, frame_values(object)).empty();
  bring(object.GetDocument(), range.start);
  const std::string end = std::to_string(state->frame.frameTime.frame());
  if (!same || !load_grids(*state, ignored) ||
      !dialog_->may_go_on("the run goes on from its end, frame " + end))
    return false;
  state_ = std::move(state);
  return continue_run_ = true;
}

}  // namespace nbx
