// The front end of a run that has a thread of its own: passes reports on to the user's front end,
// posts the host's events, and has the run's question answered on the main thread.
#pragma once

#include <atomic>
#include <semaphore>

#include "C4D/run/silent_front_end.h"

namespace nbx {

/// Events of a run to the main thread.
inline constexpr std::int32_t kSimulationEvent = 1023851;
enum SimulationEventCode : std::int32_t {
  kEventStarted = 0,   ///< record: 1, the volume object's name
  kEventFinished = 1,  ///< the thread is about to end, and the document is free
  kEventGaveUp = 2,    ///< nothing was simulated; kEventFinished follows
  kEventAsk = 5,       ///< record: 1, a question; SimulationThread::answer must be called
};

/// The questions before the start don't come here: they go to the user's front end directly.
class ThreadFrontEnd final : public SilentFrontEnd {
 public:
  /// `user` may be called on both threads. `thread` is the one of the run, whose end stops it.
  ThreadFrontEnd(RunFrontEnd& user, const host::C4DThread& thread) : user_(user), thread_(thread) {}

  /// Main thread. Stops the run at the end of the frame, or `at_once`.
  void stop(bool at_once);
  /// Main thread. The answer to the question of kEventAsk.
  void answer(bool yes);

  bool may_exceed_memory(const std::string& question) override;
  Stop wanted_stop() const override;
  std::optional<int> device() const override { return user_.device(); }
  int threads() const override { return user_.threads(); }

  void opened(const std::string& volume) override;
  void started(const RunPlan& plan) override { user_.started(plan); }
  void warn(const std::string& text) override { user_.warn(text); }
  void progress(const FrameTime& time, const Simulation3D& sim, int done, int total) override {
    user_.progress(time, sim, done, total);
  }
  void substep_done(const FrameTime& time, const Simulation3D& sim) override {
    user_.substep_done(time, sim);
  }
  void frame_done(const FrameTime& time, Simulation3D& sim) override {
    user_.frame_done(time, sim);
  }
  void frames_lost(const std::vector<LostFrame>& frames) override { user_.frames_lost(frames); }

 private:
  RunFrontEnd& user_;
  const host::C4DThread& thread_;
  std::atomic<Stop> stop_{Stop::kNo};
  std::atomic<bool> answer_{false};
  std::counting_semaphore<> answered_{0};
};

}  // namespace nbx
