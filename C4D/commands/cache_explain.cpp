#include "C4D/commands/cache_explain.h"

#include "C4D/commands/run_options.h"
#include "C4D/run/frame_history.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace {

const char* name_of(FrameValidity validity) {
  switch (validity) {
    case FrameValidity::kStale:
      return "stale";
    case FrameValidity::kMissing:
      return "missing";
    case FrameValidity::kDamaged:
      return "damaged";
    default:
      return "valid";
  }
}

const char* name_of(HistoryChange::Of of) {
  switch (of) {
    case HistoryChange::Of::kFrames:
      return "frames";
    case HistoryChange::Of::kPicture:
      return "picture";
    default:
      return "gas";
  }
}

/// One line for neighbors that share their state and its reason.
void show_frames(const std::vector<FrameFinding>& frames, host::CommandContext& context) {
  std::set<int> alike;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const FrameFinding& here = frames[i];
    host::EventFields fields{{"frame", std::int64_t{here.frame}},
                             {"state", std::string(name_of(here.validity))}};
    if (!here.reason.empty()) fields.emplace_back("reason", here.reason);
    context.Event("frame", fields);
    alike.insert(here.frame);
    if (i + 1 < frames.size() && frames[i + 1].validity == here.validity &&
        frames[i + 1].reason == here.reason)
      continue;
    context.Result(named_frames(alike) + ": " + name_of(here.validity) +
                   (here.reason.empty() ? "" : ": " + here.reason));
    alike.clear();
  }
}

void show_change(const HistoryChange& change, host::CommandContext& context) {
  const std::size_t dot = change.name.rfind('.');
  const bool of_object = dot != std::string::npos;
  host::EventFields fields{{"object", of_object ? change.name.substr(0, dot) : std::string()},
                           {"parameter", of_object ? change.name.substr(dot + 1) : change.name},
                           {"changes", std::string(name_of(change.of))},
                           {"frames", frame_ranges(change.frames)}};
  if (change.before) fields.emplace_back("before", *change.before);
  if (change.after) fields.emplace_back("after", *change.after);
  context.Event("change", fields);
  context.Result(change.text + (change.of == HistoryChange::Of::kPicture
                                    ? ": only pictures change"
                                    : ": " + named_frames(change.frames)));
}

int finish(const FrameHistory& history, host::CommandContext& context) {
  host::EventFields fields;
  std::string line;
  for (const auto validity : {FrameValidity::kValid, FrameValidity::kStale, FrameValidity::kMissing,
                              FrameValidity::kDamaged}) {
    const std::size_t count = history.count(validity);
    line += (line.empty() ? "" : ", ") + std::to_string(count) + " " + name_of(validity);
    fields.emplace_back(name_of(validity), static_cast<std::int64_t>(count));
  }
  context.Result(line);
  context.Event("end", fields);
  return history.count(FrameValidity::kValid) == history.frames.size() ? host::kDone
                                                                       : host::kFailed;
}

}  // namespace

int explain_cache(host::BaseObject& volume, const std::string& directory,
                  host::CommandContext& context) {
  const auto history = read_history(volume, directory, [&](int done, int total) {
    context.Progress(std::to_string(done) + " of " + std::to_string(total) + " frames", false);
    return context.Interrupts() == 0;
  });
  if (!history) return host::kInterrupted;
  show_frames(history->frames, context);
  for (const HistoryChange& change : history->changes) show_change(change, context);
  if (!history->unknown.empty())
    context.Note(directory + " keeps no scene for " + named_frames(history->unknown) +
                 ": nothing is known of changes since");
  return finish(*history, context);
}

}  // namespace nbx
