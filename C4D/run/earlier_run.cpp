#include "C4D/run/earlier_run.h"

#include <QDateTime>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/states/state_directory.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "cache/frame_names.h"

namespace nbx {

namespace {

QFileInfo autosave_in(const std::string& directory) {
  return QFileInfo(QString::fromStdString(autosave_file(directory)));
}

/// A run saves the scene when it starts and its state when it ends.
bool a_run_started_after(const SavedState& state, const std::string& directory) {
  return autosave_in(directory).lastModified() >
         QFileInfo(QString::fromStdString(state.path)).lastModified();
}

bool has_frames(const std::string& directory, int first, int last) {
  const auto frames = list_frames(directory);
  for (int f = first; f <= last; ++f)
    if (!frames.contains(f)) return false;
  return true;
}

/// Whether the state is that of the end of a finished run that has all its frames, and whether the
/// volume's range is that of the run, except for an end that has moved out.
bool ends_before_range(const SavedState& state, const TimeRange& range,
                       const std::string& directory) {
  if (!state.notes || !state.notes->range) return false;
  const RunRange& run = *state.notes->range;
  const FrameTime& end = state.frame.frameTime;
  return end.time == run.end && run.start == to_fraction(range.start) &&
         !a_run_started_after(state, directory) && fraction_less(run.end, to_fraction(range.end)) &&
         has_frames(directory, FrameTime{run.start, end.length}.frame(), end.frame());
}

/// Whether the scene, at the time of the state, is that which the state came from. Leaves the
/// document at the start of the range.
bool scene_is_unchanged(host::BaseObject& volume, const SavedState& state, const TimeRange& range) {
  host::BaseDocument& document = volume.GetDocument();
  evaluate(document, to_base_time(state.frame.frameTime.time));
  const bool same = differences(state.notes->scene, scene_values(volume)).empty() &&
                    differences(state.notes->frames, frame_values(volume)).empty();
  evaluate(document, range.start);
  return same;
}

/// The end of the earlier run, if a new one may extend it; else null.
std::unique_ptr<SavedState> end_to_extend(host::BaseObject& volume, RunFrontEnd& front_end) {
  if (ParameterReader(volume)(OVOLUME.LOAD_STATE)) return nullptr;
  const std::string directory = find_cache(volume);
  auto state = std::make_unique<SavedState>();
  if (!open_state(*state, last_state_file(directory))) return nullptr;
  const TimeRange range = time_range(volume);
  if (!ends_before_range(*state, range, directory) || !scene_is_unchanged(volume, *state, range) ||
      !load_grids(*state))
    return nullptr;
  const std::string end = std::to_string(state->frame.frameTime.frame());
  return front_end.may_extend("the run continues from its end, frame " + end) ? std::move(state)
                                                                              : nullptr;
}

}  // namespace

std::optional<RunOrigin> continue_earlier_run(host::BaseObject& volume, std::optional<int> at_most,
                                              RunFrontEnd& front_end) {
  const std::string directory = find_cache(volume);
  auto [state, problems] = find_state(directory, at_most);
  if (state) {
    if (!problems.empty())
      front_end.warn(problems + "; the run continues from frame " +
                     std::to_string(state->frame.frameTime.frame()));
    return RunOrigin{true, std::move(state), {}};
  }
  std::string why = "there is no state to continue from";
  if (at_most) why += " at or before frame " + std::to_string(*at_most);
  why += ": " + problems;
  const bool anything_to_lose = has_autosave(volume) || !list_frames(directory).empty();
  if (anything_to_lose && !front_end.may_start_over(why)) return {};
  return RunOrigin{true, nullptr, why};
}

std::optional<RunOrigin> settle_with_earlier_run(host::BaseObject& volume, RunFrontEnd& front_end) {
  if (!must_ask_about_cache(volume)) return RunOrigin{};
  if (auto end = end_to_extend(volume, front_end)) return RunOrigin{true, std::move(end), {}};
  if (!make_room(volume, front_end)) return {};
  return RunOrigin{};
}

}  // namespace nbx
