// The front end of a run on the command line: options answer the questions, progress is a line of
// text, and other programs get events.
#pragma once

#include <optional>
#include <string>

#include "C4D/commands/run_report.h"
#include "C4D/run/run_front_end.h"
#include "host/interface/command_data.h"
#include "util/outcome.h"

namespace nbx {

class ConsoleFrontEnd final : public RunFrontEnd {
 public:
  /// Each message begins with `subject`: the scene and the volume in it.
  ConsoleFrontEnd(const host::CommandArguments& arguments, host::CommandContext& context,
                  std::string subject);

  void refuse(const std::string& title, const std::string& text) override;
  void message(const std::string& title, const std::string& text) override;
  bool ask_to_stop(const std::string&, const std::string&) override { return false; }
  OldCache ask_about_cache(const OldRun& run) override;
  bool may_skip(const std::string& text) override;
  bool wants_new_cache() const override;
  bool may_extend(const std::string& text) override;
  bool may_start_over(const std::string& why) override;

  bool may_exceed_memory(const std::string& question) override;
  Stop wanted_stop() const override { return Stop::kNo; }  // an interrupt stops the thread
  std::optional<int> device() const override { return device_; }
  int threads() const override { return threads_; }

  void opened(const std::string&) override {}
  void started(const RunPlan& plan) override;
  void warn(const std::string& text) override { context_.Warning(subject_ + text); }
  void progress(const FrameTime& time, const Simulation3D& sim, int done, int total) override;
  void substep_done(const FrameTime& time, const Simulation3D& sim) override;
  void frame_done(const FrameTime& time, Simulation3D& sim) override;
  void frames_lost(const std::vector<LostFrame>& frames) override;

  /// After the end of the run's thread: reports the result.
  host::ExitCode finish(const Outcome& outcome, bool reached_end);
  /// There is no run because all its frames are there.
  bool skipped() const { return skipped_; }

 private:
  void report_end(const std::string& outcome);

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  const std::string subject_;
  const int device_, threads_;
  RunPlan plan_;
  bool skipped_ = false;
  std::optional<RunReport> report_;  // once the run has started
};

}  // namespace nbx
