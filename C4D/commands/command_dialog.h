// A run's dialog for the command line: options answer the questions, progress is a line, and
// programs get events.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "C4D/commands/run_report.h"
#include "C4D/run/run_dialog.h"
#include "host/interface/command_data.h"

namespace nbx {

class CommandDialog final : public RunDialog {
 public:
  /// `subject` stands before each message: which scene, and which volume in it.
  CommandDialog(const host::CommandArguments& arguments, host::CommandContext& context,
                std::string subject);

  void refuse(const std::string& title, const std::string& text) override;
  void message(const std::string& title, const std::string& text) override;
  bool ask_to_stop(const std::string&, const std::string&) override { return false; }
  OldCache ask_about_cache(const std::string& title, const std::string& text) override;
  bool may_go_on(const std::string& text) override;
  bool may_start_over(const std::string& why) override;
  /// The question that a run asks while it prepares, on the main thread.
  bool ask_to_go_on(const std::string& question);

  int device() const override { return device_; }
  int threads() const override { return threads_; }
  void started(const RunPlan& plan) override;
  void warn(const std::string& text) override { context_.Warning(text); }
  void progress(const FrameTime& time, const Simulation3D& sim, int done, int total) override;
  void substep_done(const FrameTime& time, const Simulation3D& sim) override;
  void frame_done(const FrameTime& time, Simulation3D& sim) override;
  void frames_lost(const std::vector<LostFrame>& frames) override;

  /// After the end of the run's thread: tells how it went. `failure` is empty if nothing failed.
  host::ExitCode finish(const std::string& failure, bool reached_end);

 private:
  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  const std::string subject_;
  const int device_, threads_;
  RunPlan plan_;
  std::optional<RunReport> report_;  // from the start of the frames on
};

}  // namespace nbx
