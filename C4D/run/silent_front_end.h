// The front end of a run that nobody watches.
#pragma once

#include "C4D/run/run_front_end.h"

namespace nbx {

/// Drops all reports, never stops the run, and answers so that nothing is lost: an earlier run
/// stays, and memory isn't exceeded.
class SilentFrontEnd : public RunFrontEnd {
 public:
  void refuse(const std::string&, const std::string&) override {}
  void message(const std::string&, const std::string&) override {}
  bool ask_to_stop(const std::string&, const std::string&) override { return false; }
  OldCache ask_about_cache(const OldRun&) override { return OldCache::kStop; }
  bool may_skip(const std::string&) override { return false; }
  bool wants_new_cache() const override { return false; }
  bool may_extend(const std::string&) override { return false; }
  bool may_start_over(const std::string&) override { return false; }

  bool may_exceed_memory(const std::string&) override { return false; }
  Stop wanted_stop() const override { return Stop::kNo; }
  std::optional<int> device() const override { return {}; }
  int threads() const override { return 0; }

  void opened(const std::string&) override {}
  void started(const RunPlan&) override {}
  void warn(const std::string&) override {}
  void progress(const FrameTime&, const Simulation3D&, int, int) override {}
  void substep_done(const FrameTime&, const Simulation3D&) override {}
  void frame_done(const FrameTime&, Simulation3D&) override {}
  void frames_lost(const std::vector<LostFrame>&) override {}
};

}  // namespace nbx
