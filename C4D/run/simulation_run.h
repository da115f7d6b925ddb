// One run of the simulation of a volume object, from its first frame to its last. It has no thread,
// no host events and no user interface: whoever owns it calls it on one thread, and it speaks to
// its front end alone.
//
//     SimulationRun run(volume, origin, front_end);
//     if (run.prepare()) while (run.has_next()) run.step();
//     run.finish();   // always, also after a failure or an exception
//
// An up-resolution run, whose origin names the cache of the coarse run, covers only frames that
// this cache has. If it begins in the middle, its noise begins at rest there.
//
// The front end may end it. Stop::kAtFrameEnd: the frame is completed and stored, and the state to
// continue from is saved. Stop::kNow: the frame is left as soon as possible and isn't stored.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "C4D/run/run_front_end.h"
#include "C4D/run/run_origin.h"
#include "C4D/run/run_scene.h"
#include "C4D/run/run_times.h"
#include "C4D/run/state_saver.h"
#include "cache/cache_notes.h"
#include "util/outcome.h"
#include "util/thread_waiting.h"

namespace nbx {

class SimulationRun final : private SimProgress {
 public:
  /// The volume and its document, and the front end, must outlive the run.
  SimulationRun(host::BaseObject* volume, RunOrigin origin, RunFrontEnd& front_end)
      : volume_(volume),
        source_(origin.source),
        origin_(std::move(origin)),
        front_end_(front_end) {}

  /// Brings the run to its first frame, which is then stored, or to the state that it continues
  /// from. Throws what numeric code throws.
  Outcome prepare();
  /// Simulates the next frame. False if it was left before its end.
  bool step();
  /// Whether frames are left and the front end doesn't want the run to end.
  bool has_next() const;
  /// Saves the state to continue from if a frame has just ended, and releases everything. A failure
  /// if frames could not be saved.
  Outcome finish();

  /// The simulation, for displays; empty before and after the run. Any thread.
  std::shared_ptr<Simulation3D> simulation();
  /// Document time of the last finished frame.
  const FrameTime& time() const { return times_.now; }
  /// Whether the last frame of the range was reached.
  bool reached_end() const { return prepared_ && times_.at_end(); }

 private:
  Outcome prepare_in_order();
  void make_simulation();
  bool is_upres() const { return !source_.empty(); }
  void open_scene();
  void warn_of_scene();
  Outcome take_domain();
  void report_start(bool continued);
  void mark_later_frames(bool continued);
  void write_notes(const CacheNotes& notes);
  void note_cost();
  bool step_to_state();
  void store_first_frame(bool with_sources);
  void report_frame();
  void report_lost();

  bool progress(int done, int total) override;
  void substep_done(const Simulation3D& sim) override;

  host::BaseObject* const volume_;
  const std::string source_;  // of an up-resolution run, the cache of the coarse run; else empty
  RunOrigin origin_;
  RunFrontEnd& front_end_;
  RunTimes times_;
  Vec3i voxels_;  // of the domain at the start
  RunNote note_;  // for the cache
  bool prepared_ = false;
  bool frame_done_ = false;  // the last progress was that of a whole frame

  std::optional<ThreadWaiting> thread_waiting_;  // from prepare to finish
  std::mutex sim_lock_;                          // guards sim_ against other threads
  std::shared_ptr<Simulation3D> sim_;
  std::optional<RunScene> scene_;
  std::optional<StaleMark> stale_;
  std::optional<StateSaver> states_;
};

}  // namespace nbx
