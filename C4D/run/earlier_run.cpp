#include "C4D/run/earlier_run.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/cache_branch.h"
#include "C4D/run/coarse_run.h"
#include "C4D/run/finished_run.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/states/state_directory.h"
#include "C4D/services/host_conversion.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace {

using Origin = std::optional<RunOrigin>;

int frame_of(const SavedState& state) { return state.frame.frameTime.frame(); }

int frame_at(const host::BaseTime& time, const host::BaseObject& volume) {
  return FrameTime{to_fraction(time), frame_length(volume.GetDocument().GetFps())}.frame();
}

/// The run continues from a state of the volume's cache. It began where that state's run did; if
/// nobody has noted that, at the first of the frames that lead to the state without a gap.
RunOrigin continue_from(std::unique_ptr<SavedState> state, const host::BaseObject& volume,
                        const std::string& directory) {
  const FrameTime& time = state->frame.frameTime;
  Fraction start = time.time;
  if (state->notes && state->notes->range) {
    start = state->notes->range->start;
  } else {
    const std::set<int> frames = frames_of_run(directory);
    for (int frame = time.frame(); frames.contains(--frame);)
      start = time.length * Fraction{static_cast<double>(frame), 1};
  }
  RunOrigin origin{true, std::move(state), {}, {}, {}};
  if (fraction_less(start, to_fraction(time_range(volume).start))) origin.start = start;
  return origin;
}

/// Gives the volume a new cache that holds all that the old one has up to the state.
bool move_to_new_cache(host::BaseObject& volume, const SavedState& state, RunFrontEnd& front_end) {
  const std::string from = find_cache(volume);
  if (!take_new_cache(volume, front_end)) return false;
  const std::string to = find_cache(volume);
  const Outcome shared = share_cache(from, to, frame_of(state));
  if (!shared) front_end.refuse("the frames before the run can't be shared", shared.reason());
  return static_cast<bool>(shared);
}

Origin continue_from_state(host::BaseObject& volume, std::optional<int> at_most,
                           RunFrontEnd& front_end) {
  const std::string directory = find_cache(volume);
  auto [state, problems] = find_state(directory, at_most);
  if (state) {
    if (!problems.empty())
      front_end.warn(problems + "; the run continues from frame " +
                     std::to_string(frame_of(*state)));
    if (front_end.wants_new_cache() && !move_to_new_cache(volume, *state, front_end)) return {};
    return continue_from(std::move(state), volume, directory);
  }
  std::string why = "there is no state to continue from";
  if (at_most) why += " at or before frame " + std::to_string(*at_most);
  why += ": " + problems;
  const bool anything_to_lose = has_autosave(volume) || !list_frames(directory).empty();
  if (anything_to_lose && !front_end.may_start_over(why)) return {};
  return RunOrigin{true, nullptr, why, {}, {}};
}

/// The state of the frame, or else the frame itself. Null, after a refusal, if neither can be read.
std::unique_ptr<SavedState> read_frame(const std::string& directory, int frame,
                                       RunFrontEnd& front_end) {
  auto [state, problems] = find_state_of(directory, frame);
  if (state) return std::move(state);
  if (!problems.empty())
    front_end.warn(problems + "; the run starts from what the cache holds of frame " +
                   std::to_string(frame));
  const auto frames = list_frames(directory);
  const auto found = frames.find(frame);
  const std::string path = found == frames.end() ? "" : directory + "/" + found->second;
  state = std::make_unique<SavedState>();
  const Outcome read = path.empty() ? Outcome::failure("it isn't in the cache " + directory)
                                    : read_state(*state, path);
  if (read) return std::move(state);
  front_end.refuse("the run can't start from frame " + std::to_string(frame),
                   (path.empty() ? "" : path + ": ") + read.reason());
  return nullptr;
}

/// "frames 11-20": the earlier run's frames after `frame`. Empty if there are none.
std::string later_frames(const host::BaseObject& volume, int frame) {
  std::set<int> later = frames_of_run(find_cache(volume));
  later.erase(later.begin(), later.upper_bound(frame));
  return later.empty() ? "" : named_frames(later);
}

/// Asks if frames after the state would be lost. Moves to a new cache if they are to stay.
bool may_replace_after(host::BaseObject& volume, const SavedState& state, RunFrontEnd& front_end) {
  const std::string later = later_frames(volume, frame_of(state));
  OldCache choice = OldCache::kOverwrite;
  if (front_end.wants_new_cache())
    choice = OldCache::kMakeNew;
  else if (!later.empty() && must_ask_about_cache(volume))
    choice = front_end.ask_about_cache(
        {texts::kCacheHoldsRun.title, texts::kCacheHoldsRun.text, {}, later});
  if (choice == OldCache::kMakeNew) return move_to_new_cache(volume, state, front_end);
  return choice == OldCache::kOverwrite;
}

Origin start_from_frame(host::BaseObject& volume, const RunRequest& request,
                        RunFrontEnd& front_end) {
  const int frame = request.frame.value_or(0);
  const std::string directory = find_cache(volume);
  auto state = read_frame(directory, frame, front_end);
  if (!state) return {};
  std::optional<SceneRecord> scene;
  if (const auto saved = state->notes ? nullptr : SavedScene::open(volume, directory))
    scene = saved->at(state->frame.frameTime.time, !request.source.empty());
  if (!may_replace_after(volume, *state, front_end)) return {};
  RunOrigin origin = continue_from(std::move(state), volume, directory);
  origin.scene = std::move(scene);
  return origin;
}

/// The frame right before the range, if it is one of the earlier run's.
std::optional<int> frame_before(const host::BaseObject& volume) {
  if (ParameterReader(volume)(OVOLUME.LOAD_STATE)) return {};
  const int frame = frame_at(time_range(volume).start, volume) - 1;
  return frames_of_run(find_cache(volume)).contains(frame) ? std::optional(frame) : std::nullopt;
}

/// "Nothing to do: frames 0-20 are there."
std::string nothing_to_do(const RunTimes& times) {
  std::set<int> frames;
  for (int f = times.now.frame(); f <= times.end.frame(); ++f) frames.insert(f);
  return "Nothing to do: " + named_frames(frames) + (frames.size() == 1 ? " is" : " are") +
         " there.";
}

Origin start_new(host::BaseObject& volume, const std::string& source, RunFrontEnd& front_end) {
  if (!must_ask_about_cache(volume)) return RunOrigin{};
  if (auto run = find_finished_run(volume, source)) {
    RunTimes times = run_times(volume);
    if (!source.empty()) limit_to_coarse_run(times, source);
    const bool is_longer = fraction_less(run->notes->range->end, times.end.time);
    if (!is_longer && front_end.may_skip(nothing_to_do(times))) return {};
    const std::string end = std::to_string(frame_of(*run));
    if (is_longer && load_grids(*run) &&
        front_end.may_extend("the run continues from its end, frame " + end))
      return RunOrigin{true, std::move(run), {}, {}, {}};
  }
  const std::optional<int> before = frame_before(volume);
  if (!make_room(volume, front_end, before, before ? later_frames(volume, *before) : "")) return {};
  return RunOrigin{};
}

}  // namespace

Outcome check_start_frame(const host::BaseObject& volume, int frame) {
  const std::string directory = named_cache(volume), number = std::to_string(frame);
  if (directory.empty()) return Outcome::failure("the volume has no cache yet");
  const std::set<int> frames = frames_of_run(directory), stale = stale_frames(directory);
  if (frames.contains(frame) || has_state_of(directory, frame)) return Outcome::success();
  const std::string there = "the frames to start from are " + frame_ranges(frames);
  if (stale.contains(frame))
    return Outcome::failure("frame " + number + " in " + directory +
                            " belongs to an earlier run than the frames before it: " + there);
  const std::string missing = "the cache " + directory + " has no frame " + number;
  return Outcome::failure(frames.empty() ? missing + ": simulate the scene from its start first"
                                         : missing + ": " + there);
}

Origin settle_origin(host::BaseObject& volume, const RunRequest& request, RunFrontEnd& front_end) {
  switch (request.from) {
    case RunRequest::From::kState:
      return continue_from_state(volume, request.frame, front_end);
    case RunRequest::From::kFrame:
      return start_from_frame(volume, request, front_end);
    case RunRequest::From::kStart:
      break;
  }
  return start_new(volume, request.source, front_end);
}

}  // namespace nbx
