// Runs the simulation of one volume object from its first frame to its last, in the background.
//
// A user's run is a thread: start_simulation asks what is to be asked and starts it, events tell
// the main thread how it goes, and cleanup ends it whatever happened. A renderer that simulates as
// it goes makes one of its own and calls prepare_sim, step and cleanup on its own thread instead.
//
//     preparing    prepare_sim
//     frame loop   step, once a frame
//     stopping     the frame goes to its end and is stored
//     aborted      the frame is left as soon as possible and isn't stored
//     cleanup      the state to go on from is saved if a frame has just ended
//
// States are saved on the way too if the volume asks for that. Once a run has saved one, those of
// other runs go, so that nobody goes on from a state that has nothing to do with the frames.
//
// From the start to the end event the run owns the document: nobody else may evaluate it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <set>
#include <string>
#include <vector>

#include "C4D/run/run_dialog.h"
#include "C4D/run/simulation_state.h"
#include "C4D/sources/emitter_sampler.h"
#include "C4D/sources/solid_sampler.h"
#include "C4D/sources/source_substeps.h"
#include "C4D/sources/source_tags.h"
#include "host/interface/c4d_thread.h"

namespace nbx {

/// Events of a run to the main thread.
inline constexpr std::int32_t kSimulationEvent = 1023851;
enum SimulationEventCode : std::int32_t {
  kEventStarted = 0,   ///< record: 1, the volume object's name
  kEventFinished = 1,  ///< the thread is about to end and the document is free
  kEventGaveUp = 2,    ///< nothing was simulated; kEventFinished follows
  kEventAsk = 5,       ///< record: 1, a question; to be answered by SimulationThread::answer
};

class SimulationThread final : public host::C4DThread, private SceneEvaluator, private SimProgress {
 public:
  ~SimulationThread() override { End(true); }
  std::string GetThreadName() const override { return "Nimbrix Simulation"; }

  /// Main thread. Asks, saves the scene and starts the thread; `dialog` must live until the thread
  /// has ended. False if the run was refused or the user wants none. `continue_run` goes on from
  /// the last state of the cache, or from the last one at or before the frame `at_most`.
  bool start_simulation(host::BaseObject* object, bool continue_run, RunDialog& dialog,
                        std::optional<int> at_most = {});
  /// Ends the run at the end of the frame, or `at_once`. Any thread.
  void stop(bool at_once);
  /// The user's answer to the question of kEventAsk.
  void answer(bool yes);

  /// Prepares a run. False, with a log line, if there is nothing to run; the volume is then
  /// forgotten. `render_thread` is the renderer's, null in the thread of a user's run. Throws what
  /// numeric code throws.
  bool prepare_sim(host::BaseObject* object, const host::C4DThread* render_thread);
  /// Simulates the next frame. False if it was left before its end.
  bool step();
  /// Saves the state if a frame has just ended, and drops all else.
  void cleanup();

  /// The simulation, for displays; empty between runs. Any thread.
  std::shared_ptr<Simulation3D> simulation();
  /// Document time of the last finished frame.
  const FrameTime& time() const { return time_; }

  /// After the end: what went wrong, in a line; empty if nothing did. And whether the last frame of
  /// the range was reached.
  const std::string& failure() const { return failure_; }
  bool reached_end() const { return reached_end_; }

 protected:
  void Main() override;

 private:
  bool find_origin(const std::string& directory, std::optional<int> at_most);
  bool settle_with_earlier_run(const std::string& directory);
  bool extends_earlier_run(const std::string& directory);
  bool prepare(host::BaseObject* object);
  bool open_cache();
  void make_simulation();
  std::string missing_memory();
  bool ask(const std::string& question);
  enum class Origin { kAnew, kFromState, kContinued };
  bool read_origin();
  Origin load_state();
  void finish_state(Origin origin);
  void tell_differences(const StateNotes& notes);
  void pre_roll();
  void forget_scene();
  void warn(const std::string& text) {
    if (dialog_) dialog_->warn(text);
  }
  RunRange run_range() const { return {start_time_.time, end_time_.time}; }
  void save_state(const std::string& path);
  void save_state_if_due();
  void save_last_state();
  void remove_other_states();
  bool give_up(const std::string& why, bool tell);
  bool evaluate_at(const host::BaseTime& time);
  const host::C4DThread* evaluating_thread() const {
    return render_thread_ ? render_thread_ : this;
  }
  void report_lost();

  StepSettings read_settings(const RunView& run, double dt) override;
  void update_inputs(const RunView& run, StepSources& sources, double dt) override;
  Solids update_solids(const RunView& run, double dt) override;
  bool progress(int done, int total) override;
  void substep_done(const Simulation3D& sim) override;

  // Given by start_simulation.
  host::BaseObject* object_link_ = nullptr;
  bool continue_run_ = false;
  RunDialog* dialog_ = nullptr;

  // Of the run.
  host::BaseObject* object_ = nullptr;
  const host::C4DThread* render_thread_ = nullptr;
  std::vector<host::BaseTag*> source_tags_;
  std::unique_ptr<EmitterSampler> emitters_;
  std::unique_ptr<SolidSampler> solids_;
  FrameTime time_, start_time_, end_time_;
  bool running_ = false;
  bool frame_done_ = false;
  bool reached_end_ = false;
  std::string failure_;
  std::unique_ptr<SavedState> state_;  // to go on from, until the run has it
  std::string no_state_;               // why there is none
  std::set<std::string> own_states_;   // files that this run has saved, or has come from
  std::optional<int> continued_from_;  // frame of the state that a continued run has come from

  std::atomic<bool> stop_at_frame_end_{false}, stop_now_{false};
  std::atomic<bool> question_answer_{false};
  std::counting_semaphore<> question_done_{0};

  std::mutex sim_lock_;  // guards sim_ against other threads
  std::shared_ptr<Simulation3D> sim_;
};

/// The one of the process that serves the user.
SimulationThread& simulation_thread();

/// Stops the user's run, if there is one, since the host goes down. Doesn't wait for its end. Main
/// thread.
void stop_at_shutdown();

}  // namespace nbx
