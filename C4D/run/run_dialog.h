// What a run tells and asks whoever started it: a dialog in a window, or a command in its place.
#pragma once

#include <string>
#include <vector>

#include "cache/bfs.h"
#include "cache/frame_time.h"
#include "math/vector.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// What a run is about to do.
struct RunPlan {
  int first = 0, last = 0;  // frames that it will store; none if the last lies before the first
  Vec3i voxels;             // of the domain
  std::string directory;    // of the frames
};

/// What may be over an older run: the user's choice.
enum class OldCache { kStop, kOverwrite, kMakeNew };

class RunDialog {
 public:
  virtual ~RunDialog() = default;

  /// On the main thread, before the run starts.
  virtual void refuse(const std::string& title, const std::string& text) = 0;
  virtual void message(const std::string& title, const std::string& text) = 0;
  virtual bool ask_to_stop(const std::string& title, const std::string& text) = 0;
  virtual OldCache ask_about_cache(const std::string& title, const std::string& text) = 0;
  /// A finished run can go on, since its end has moved out; `text` says from where. False if the
  /// user wants something else.
  virtual bool may_go_on(const std::string& text) = 0;
  /// There is no state to go on from, as `why` says. True if the user wants to simulate over the
  /// earlier run then.
  virtual bool may_start_over(const std::string& why) = 0;

  /// On the simulation thread. Not to be slow.
  virtual int device() const = 0;   // of the run's fields: a device, or -1 for the processor
  virtual int threads() const = 0;  // 0: as many as there are processors
  virtual void started(const RunPlan& plan) = 0;
  virtual void warn(const std::string& text) = 0;
  virtual void progress(const FrameTime& time, const Simulation3D& sim, int done, int total) = 0;
  virtual void substep_done(const FrameTime& time, const Simulation3D& sim) = 0;
  virtual void frame_done(const FrameTime& time, Simulation3D& sim) = 0;
  virtual void frames_lost(const std::vector<LostFrame>& frames) = 0;
};

}  // namespace nbx
