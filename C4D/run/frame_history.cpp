#include "C4D/run/frame_history.h"

#include <algorithm>

#include "C4D/run/saved_scene.h"
#include "C4D/run/states/state_directory.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_info.h"
#include "cache/cache_notes.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace {

using Of = HistoryChange::Of;

class HistoryReader {
 public:
  HistoryReader(host::BaseObject& volume, const std::string& directory)
      : volume_(volume),
        directory_(directory),
        upres_(is_upres_cache(directory)),
        fps_(volume.GetDocument().GetFps()),
        own_(own_frames(directory)) {}

  void compare_with_saved_scene();
  void compare_with_states();
  std::vector<HistoryChange> changes() const;
  std::set<int> unknown() const;
  std::vector<FrameFinding> findings(const std::function<bool(int, int)>& progress) const;

 private:
  Fraction time_of(int frame) const {
    return frame_length(fps_) * Fraction{static_cast<double>(frame), 1};
  }
  int first_of_range() const { return frame_at(time_range(volume_).start); }
  int frame_at(const host::BaseTime& time) const { return static_cast<int>(time.GetFrame(fps_)); }
  std::set<int> own_from(int first) const { return {own_.lower_bound(first), own_.end()}; }
  void add(Of of, const ValueChange& change, const std::set<int>& frames);
  void compare_with_state(int frame, const StateNotes& notes, int since);
  void compare_start(const RunRange& range);
  std::string why_stale(int frame) const;

  host::BaseObject& volume_;
  const std::string& directory_;
  const bool upres_;
  const host::FrameRate fps_;
  const std::set<int> own_;
  std::set<int> compared_;  // with the saved scene
  std::set<int> covered_;   // by that or by a state
  std::map<std::string, HistoryChange> changes_;
};

void HistoryReader::add(Of of, const ValueChange& change, const std::set<int>& frames) {
  auto [found, is_new] = changes_.try_emplace(change.name);
  HistoryChange& entry = found->second;
  if (is_new) entry = {change.name, change.before, change.after, of, {}, text_of(change)};
  entry.frames.insert(frames.begin(), frames.end());
}

void HistoryReader::compare_with_saved_scene() {
  const auto saved = SavedScene::open(volume_, directory_);
  if (!saved) return;
  const std::vector<RunNote> runs = read_cache_notes(directory_).runs;
  for (const int frame : runs.empty() ? own_ : own_from(runs.back().first)) {
    const SceneRecord then = saved->at(time_of(frame), upres_);
    evaluate(volume_.GetDocument(), to_base_time(time_of(frame)));
    for (const ValueChange& change :
         nbx::changes(then.scene, scene_values(volume_, upres_, ComparedWith::kSavedScene)))
      add(Of::kGas, change, own_from(frame));
    for (const ValueChange& change : nbx::changes(then.frames, frame_values(volume_)))
      add(Of::kFrames, change, {frame});
    for (const ValueChange& change :
         nbx::changes(picture_values(saved->volume()), picture_values(volume_)))
      add(Of::kPicture, change, {});
    compared_.insert(frame);
  }
  covered_ = compared_;
}

void HistoryReader::compare_with_states() {
  std::vector<StateFile> states = list_states(directory_);
  std::reverse(states.begin(), states.end());  // the earliest first
  int since = own_.empty() ? 0 : *own_.begin();
  for (const StateFile& file : states) {
    SavedState state;
    if (!file.frame || !own_.contains(*file.frame) || !open_state(state, file.path) || !state.notes)
      continue;
    compare_with_state(*file.frame, *state.notes, since);
    covered_.insert(own_.begin(), own_.upper_bound(*file.frame));
    since = *file.frame + 1;
  }
}

/// A difference that isn't known yet came up after the state before: from `since` on.
void HistoryReader::compare_with_state(int frame, const StateNotes& notes, int since) {
  evaluate(volume_.GetDocument(), to_base_time(time_of(frame)));
  for (const ValueChange& change : nbx::changes(notes.scene, scene_values(volume_, upres_)))
    if (!changes_.contains(change.name) || !changes_.at(change.name).frames.contains(frame))
      add(Of::kGas, change, own_from(since));
  for (const ValueChange& change : nbx::changes(notes.frames, frame_values(volume_)))
    for (const int f : own_from(since))
      if (f <= frame && !compared_.contains(f)) add(Of::kFrames, change, {f});
  if (notes.range) compare_start(*notes.range);
}

/// A run that began later than one would begin today lacks the gas of the frames before.
void HistoryReader::compare_start(const RunRange& range) {
  const int then = frame_at(to_base_time(range.start)), now = first_of_range();
  if (then <= now) return;
  add(Of::kGas, {volume_.GetName() + ".first_frame", std::to_string(then), std::to_string(now)},
      own_);
}

std::vector<HistoryChange> HistoryReader::changes() const {
  std::vector<HistoryChange> all;
  for (const auto& [name, change] : changes_) all.push_back(change);
  return all;
}

std::set<int> HistoryReader::unknown() const {
  std::set<int> frames = own_;
  for (const int frame : covered_) frames.erase(frame);
  return frames;
}

std::string HistoryReader::why_stale(int frame) const {
  for (const auto& [name, change] : changes_)
    if (change.frames.contains(frame)) return change.text;
  return {};
}

std::vector<FrameFinding> HistoryReader::findings(
    const std::function<bool(int, int)>& progress) const {
  const auto files = list_frames(directory_);
  std::set<int> wanted;
  for (const auto& [frame, name] : files) wanted.insert(frame);
  const int last = frame_at(time_range(volume_).end);
  for (int frame = first_of_range(); frame <= last; ++frame) wanted.insert(frame);

  std::vector<FrameFinding> all;
  int done = 0;
  for (const int frame : wanted) {
    FrameFinding& found = all.emplace_back(FrameFinding{frame, FrameValidity::kMissing, {}});
    const auto file = files.find(frame);
    if (file == files.end()) continue;
    if (!progress(++done, static_cast<int>(files.size()))) return {};
    const FrameFileInfo info = read_frame_file_info(directory_ + "/" + file->second, true);
    const std::string why = own_.contains(frame) ? why_stale(frame) : "an earlier run has left it";
    found.validity = !info.good()  ? FrameValidity::kDamaged
                     : why.empty() ? FrameValidity::kValid
                                   : FrameValidity::kStale;
    found.reason = info.good() ? why : info.first_damage();
  }
  return all;
}

}  // namespace

std::size_t FrameHistory::count(FrameValidity validity) const {
  return std::ranges::count(frames, validity, &FrameFinding::validity);
}

std::optional<FrameHistory> read_history(host::BaseObject& volume, const std::string& directory,
                                         const std::function<bool(int, int)>& progress) {
  HistoryReader reader(volume, directory);
  reader.compare_with_saved_scene();
  reader.compare_with_states();
  evaluate(volume.GetDocument(), time_range(volume).start);
  std::vector<FrameFinding> frames = reader.findings(progress);
  if (frames.empty()) return {};
  return FrameHistory{std::move(frames), reader.changes(), reader.unknown()};
}

}  // namespace nbx
