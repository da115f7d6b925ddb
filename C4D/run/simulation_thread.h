// The thread that simulates for the user, one run at a time.
//
// start_simulation() puts the open questions to the user and starts the thread; events report its
// progress to the main thread (thread_front_end.h). From the start to the end event the run owns
// the document: nobody else may evaluate it.
#pragma once

#include <memory>
#include <optional>

#include "C4D/run/run_front_end.h"
#include "C4D/run/simulation_run.h"
#include "C4D/run/thread_front_end.h"
#include "host/interface/c4d_thread.h"
#include "util/outcome.h"

namespace nbx {

/// All operations belong to the main thread.
class SimulationThread final : public host::C4DThread {
 public:
  /// Ends the run at once.
  ~SimulationThread() override;
  std::string GetThreadName() const override { return "Nimbrix Simulation"; }

  /// Asks, saves the scene and starts the thread; `front_end` must live until the thread has ended.
  /// False if the run is refused, or the user doesn't want or need it.
  bool start_simulation(host::BaseObject* object, const RunRequest& request,
                        RunFrontEnd& front_end);
  /// Ends the run at the end of the frame, or `at_once`.
  void stop(bool at_once);
  /// The user's answer to the question of kEventAsk.
  void answer(bool yes);
  /// The host shuts down: ends the run at once, if there is one, without waiting for its end.
  void stop_at_shutdown();

  /// After the end: a failure if anything went wrong, and whether the last frame of the range was
  /// reached.
  const Outcome& outcome() const { return outcome_; }
  bool reached_end() const { return run_ && run_->reached_end(); }

 protected:
  void Main() override;

 private:
  Outcome prepare_and_step();

  std::optional<ThreadFrontEnd> front_end_;  // of the last run, like all below
  std::optional<SimulationRun> run_;
  Outcome outcome_ = Outcome::success();
};

/// The user's thread, from the first load of the plug-in to its last end; null otherwise. The
/// plug-in's entry owns it. Main thread.
SimulationThread* simulation_thread();
void set_simulation_thread(SimulationThread* thread);

}  // namespace nbx
