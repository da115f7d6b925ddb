#include "C4D/run/finished_run.h"

#include <QDateTime>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/states/state_directory.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace {

/// A run saves the scene when it starts and its state when it ends.
bool a_run_started_after(const SavedState& state, const std::string& directory) {
  const auto written = [](const std::string& path) {
    return QFileInfo(QString::fromStdString(path)).lastModified();
  };
  return written(autosave_file(directory)) > written(state.path);
}

/// Whether the cache holds these frames, and none of them is left from a run before.
bool has_frames(const std::string& directory, int first, int last) {
  const auto frames = list_frames(directory);
  const auto stale = stale_frames(directory);
  for (int f = first; f <= last; ++f)
    if (!frames.contains(f) || stale.contains(f)) return false;
  return true;
}

/// Whether the state is that of the end of a finished run from `start` that has all its frames.
bool is_end_of_run(const SavedState& state, const Fraction& start, const std::string& directory) {
  if (!state.notes || !state.notes->range) return false;
  const RunRange& run = *state.notes->range;
  const FrameTime& end = state.frame.frameTime;
  return end.time == run.end && run.start == start && !a_run_started_after(state, directory) &&
         has_frames(directory, FrameTime{run.start, end.length}.frame(), end.frame());
}

/// Whether the scene, at the time of the state, is that which the state came from. Leaves the
/// document at the start of the range.
bool scene_is_unchanged(host::BaseObject& volume, const SavedState& state,
                        const host::BaseTime& start, bool upres) {
  host::BaseDocument& document = volume.GetDocument();
  evaluate(document, to_base_time(state.frame.frameTime.time));
  const bool same = differences(state.notes->scene, scene_values(volume, upres)).empty() &&
                    differences(state.notes->frames, frame_values(volume)).empty();
  evaluate(document, start);
  return same;
}

}  // namespace

std::unique_ptr<SavedState> find_finished_run(host::BaseObject& volume, const std::string& source) {
  const bool upres = !source.empty();
  if (!upres && ParameterReader(volume)(OVOLUME.LOAD_STATE)) return nullptr;
  const std::string directory = find_cache(volume);
  auto state = std::make_unique<SavedState>();
  if (!open_state(*state, last_state_file(directory))) return nullptr;
  if (upres && a_run_started_after(*state, source)) return nullptr;
  const host::BaseTime start = time_range(volume).start;
  const bool same = is_end_of_run(*state, to_fraction(start), directory) &&
                    scene_is_unchanged(volume, *state, start, upres);
  return same ? std::move(state) : nullptr;
}

}  // namespace nbx
