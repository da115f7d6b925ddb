#include "C4D/commands/console_front_end.h"

#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

/// What the user can do about the earlier run, as options to give.
std::string choices(const OldRun& run) {
  if (run.frame_before) {
    const std::string before = std::to_string(*run.frame_before);
    const char* const also = run.later_frames.empty() ? "" : " --overwrite";
    return ", and the range begins right after its frame " + before + ": give --start-from " +
           before + also +
           " to continue from that frame, --overwrite alone to start a new simulation " +
           "at frame " + std::to_string(*run.frame_before + 1) +
           ", without gas, or --new-cache to leave the earlier run alone";
  }
  if (!run.later_frames.empty())
    return ": give --overwrite to replace " + run.later_frames +
           ", or --new-cache to leave them alone";
  return ": give --overwrite to simulate over it, --new-cache to leave it alone, or --continue to "
         "continue from its end";
}

}  // namespace

ConsoleFrontEnd::ConsoleFrontEnd(const host::CommandArguments& arguments,
                                 host::CommandContext& context, std::string subject)
    : arguments_(arguments),
      context_(context),
      subject_(std::move(subject)),
      device_(cuda_use_flags().on_gpu() ? cuda_use_flags().device.load() : -1),
      threads_(arguments.GetLong("threads")) {}

void ConsoleFrontEnd::refuse(const std::string& title, const std::string& text) {
  context_.Error(subject_ + title + (text.empty() ? "" : ": " + text));
}

void ConsoleFrontEnd::message(const std::string& title, const std::string& text) {
  context_.Warning(subject_ + title + ": " + text);
}

// Only a run over the whole earlier one can be agreed to with --yes. Where the new run keeps a part
// of it, the user must say that the rest may go.
OldCache ConsoleFrontEnd::ask_about_cache(const OldRun& run) {
  if (arguments_.Has("new-cache")) return OldCache::kMakeNew;
  const bool keeps_a_part = run.frame_before || !run.later_frames.empty();
  if (arguments_.Has("overwrite") || (arguments_.Has("yes") && !keeps_a_part))
    return OldCache::kOverwrite;
  context_.Error(subject_ + run.title + choices(run));
  return OldCache::kStop;
}

bool ConsoleFrontEnd::may_skip(const std::string& text) {
  if (arguments_.Has("overwrite") || wants_new_cache()) return false;
  context_.Result(text);
  report_end("done");
  skipped_ = true;
  return true;
}

bool ConsoleFrontEnd::wants_new_cache() const { return arguments_.Has("new-cache"); }

bool ConsoleFrontEnd::may_extend(const std::string& text) {
  if (arguments_.Has("overwrite") || wants_new_cache()) return false;
  context_.Note(subject_ + text);
  return true;
}

// With --yes alone the earlier run stays: its frames would be lost.
bool ConsoleFrontEnd::may_start_over(const std::string& why) {
  if (arguments_.Has("overwrite")) return true;
  context_.Error(subject_ + why + ": give --overwrite to simulate over the earlier run");
  return false;
}

bool ConsoleFrontEnd::may_exceed_memory(const std::string& question) {
  if (arguments_.Has("yes") || arguments_.Has("force")) {
    context_.Warning(subject_ + question);
    return true;
  }
  context_.Error(subject_ + question + "; --force tries it anyway");
  return false;
}

void ConsoleFrontEnd::started(const RunPlan& plan) {
  plan_ = plan;
  report_.emplace(context_, std::max(plan.last - plan.first + 1, 0));
  context_.Event("start",
                 {{"first", std::int64_t{plan.first}},
                  {"last", std::int64_t{plan.last}},
                  {"voxels", std::vector<double>(plan.voxels.v.begin(), plan.voxels.v.end())},
                  {"directory", plan.directory}});
}

void ConsoleFrontEnd::progress(const FrameTime& time, const Simulation3D& sim, int done,
                               int total) {
  if (done < total) report_->step(time.frame(), sim.clock, sim.steps_remaining(), done, total);
}

void ConsoleFrontEnd::substep_done(const FrameTime& time, const Simulation3D& sim) {
  report_->substep(time.frame(), sim);
}

void ConsoleFrontEnd::frame_done(const FrameTime& time, Simulation3D& sim) {
  report_->frame(time.frame(), sim);
}

void ConsoleFrontEnd::frames_lost(const std::vector<LostFrame>& frames) {
  if (report_) report_->lost(frames);
}

/// The event of the end. Without a run its figures are 0.
void ConsoleFrontEnd::report_end(const std::string& outcome) {
  const auto figure = [this](auto of_report) {
    return std::int64_t{report_ ? ((*report_).*of_report)() : 0};
  };
  const std::int64_t frames = figure(&RunReport::frames_done);
  context_.Event("end", {{"outcome", outcome},
                         {"frames", frames},
                         {"stored", frames - figure(&RunReport::frames_lost)},
                         {"empty", figure(&RunReport::frames_empty)},
                         {"frames_beyond_cfl", figure(&RunReport::frames_beyond_cfl)},
                         {"frames_above_tolerance", figure(&RunReport::frames_above_tolerance)},
                         {"substeps_wanted", figure(&RunReport::substeps_wanted)},
                         {"seconds", report_ ? report_->seconds() : 0.0}});
}

host::ExitCode ConsoleFrontEnd::finish(const Outcome& outcome, bool reached_end) {
  const int done = report_ ? report_->frames_done() : 0;
  const int stored = done - (report_ ? report_->frames_lost() : 0);
  const char* const end = !outcome ? "failed" : reached_end ? "done" : "interrupted";
  const std::string frames = std::to_string(stored) + (stored == 1 ? " frame" : " frames");
  report_end(end);
  if (!outcome) {
    context_.Error(subject_ + "the run failed after " + frames + ": " + outcome.reason());
    return host::kFailed;
  }
  // A run that is stopped while it prepares has no plan yet.
  const std::string where =
      report_ ? " in " + plan_.directory + report_->losses() + report_->missing_substeps() : "";
  const char* const content = done > 0 && report_->frames_empty() == done ? ", all empty," : "";
  context_.Result(std::string(end) + ": " + frames + content + where);
  if (!reached_end) return host::kInterrupted;
  return stored < done ? host::kFailed : host::kDone;
}

}  // namespace nbx
