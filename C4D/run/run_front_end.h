// The questions and the reports of a run. Whoever starts a run implements it: a dialog, a command
// or a render.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cache/bfs.h"
#include "cache/frame_time.h"
#include "host/interface/c4d_thread.h"
#include "math/vector.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// What a run is about to do.
struct RunPlan {
  int first = 0, last = 0;  // frames to store; none if the last lies before the first
  Vec3i voxels;             // of the domain
  std::string directory;    // of the frames
};

/// What to do with a cache that already holds a run.
enum class OldCache { kStop, kOverwrite, kMakeNew };

/// The earlier run that a new one would replace, or a part of which it would.
struct OldRun {
  std::string title, text;          // of a box that asks
  std::optional<int> frame_before;  // its frame right before the first one of the new run
  std::string later_frames;         // "frames 11-20", if the new run keeps those before them
};

/// Whether a run should end, and when.
enum class Stop { kNo, kAtFrameEnd, kNow };

/// A run has exactly one front end, which outlives it. Where nobody listens, that is a
/// SilentFrontEnd.
class RunFrontEnd : public host::BreakTest {
 public:
  // Before the run starts, on the main thread.

  /// There will be no run.
  virtual void refuse(const std::string& title, const std::string& text) = 0;
  /// A message to the user about a run that starts anyway.
  virtual void message(const std::string& title, const std::string& text) = 0;
  /// Another run is active. True if it may be stopped.
  virtual bool ask_to_stop(const std::string& title, const std::string& text) = 0;
  /// The cache holds a run.
  virtual OldCache ask_about_cache(const OldRun& run) = 0;
  /// A finished run of the same scene has all frames of the range, as `text` says. True if the user
  /// is content with that: there will be no run.
  virtual bool may_skip(const std::string& text) = 0;
  /// Whether a run that continues leaves the cache as it is and gets a new one.
  virtual bool wants_new_cache() const = 0;
  /// The end of a finished run has moved out, so the new run only has to add frames. `text` says
  /// where it continues. False if the user wants something else.
  virtual bool may_extend(const std::string& text) = 0;
  /// There is no state to continue from, as `why` explains. True if the new run may replace the
  /// frames of the earlier one.
  virtual bool may_start_over(const std::string& why) = 0;

  // During the run, on its thread. These must be fast, except for the question.

  /// The machine may have too little memory for the run, as `question` explains. True to try.
  virtual bool may_exceed_memory(const std::string& question) = 0;
  /// Whether the user or the host wants the run to end. Once it is wanted, it stays so. Any thread.
  virtual Stop wanted_stop() const = 0;
  /// The device for the fields, or -1 for the processor. Nothing: the thread's choice stays.
  virtual std::optional<int> device() const = 0;
  /// Threads to compute with; 0: one for each processor.
  virtual int threads() const = 0;

  /// The run has its cache, and reads the scene now.
  virtual void opened(const std::string& volume) = 0;
  /// The run knows what it will do.
  virtual void started(const RunPlan& plan) = 0;
  /// Something looks wrong with the scene or the state, and the run continues. One line.
  virtual void warn(const std::string& text) = 0;
  /// A point within the frame after `time`.
  virtual void progress(const FrameTime& time, const Simulation3D& sim, int done, int total) = 0;
  virtual void substep_done(const FrameTime& time, const Simulation3D& sim) = 0;
  /// The frame of `time` is complete and has gone to the cache.
  virtual void frame_done(const FrameTime& time, Simulation3D& sim) = 0;
  /// Frames that could not be saved, if there are any since the last report.
  virtual void frames_lost(const std::vector<LostFrame>& frames) = 0;

  /// Breaks off evaluations of the document too.
  bool TestBreak() const final { return wanted_stop() == Stop::kNow; }
};

}  // namespace nbx
