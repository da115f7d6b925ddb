// What the user sees of a running simulation: progress lines, and events for other programs.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "simulation/simulation3d.h"
#include "util/stopwatch.h"

namespace nbx {

class RunReport {
 public:
  RunReport(host::CommandContext& context, int frames_total)
      : context_(context), frames_total_(frames_total) {}

  /// A point within the frame after `frame`: `done` of `total` parts are done. Cheap, since most
  /// calls show nothing.
  void step(int frame, const StepClock& step, int steps_remaining, int done, int total);

  /// The end of a substep of the frame after `frame`.
  void substep(int frame, const Simulation3D& sim);

  /// A complete frame has gone to the cache.
  void frame(int number, Simulation3D& sim);

  /// Frames that could not be saved.
  void lost(const std::vector<LostFrame>& frames);

  /// "; gas leaves through x+ from frame 31", or nothing.
  std::string losses() const;
  /// "; 30 frames needed up to 7 substeps, but max_substeps is 2", or nothing if that happened in
  /// few frames.
  std::string missing_substeps() const;

  int frames_done() const { return frames_done_; }
  /// Frames without gas.
  int frames_empty() const { return frames_empty_; }
  /// Frames in which the gas traveled farther than the CFL limit allows.
  int frames_beyond_cfl() const { return frames_beyond_cfl_; }
  /// The most substeps that a frame needed by the CFL limit.
  int substeps_wanted() const { return substeps_wanted_; }
  /// Frames whose pressure did not converge to the tolerance.
  int frames_above_tolerance() const { return frames_above_tolerance_; }
  int frames_lost() const { return frames_lost_; }
  double seconds() const { return since_start_.seconds(); }

 private:
  std::string line(int number, double frames_done) const;
  void note_losses(int number, Simulation3D& sim);
  void note_substeps(Simulation3D& sim);
  void note_pressure(int number, Simulation3D& sim);

  host::CommandContext& context_;
  const int frames_total_;
  int frames_done_ = 0;
  int frames_lost_ = 0;
  int frames_empty_ = 0;
  int frames_above_tolerance_ = 0;
  int frames_beyond_cfl_ = 0, substeps_wanted_ = 0, max_substeps_ = 0;
  std::array<std::optional<int>, 6> leaves_from_;  // first frame whose gas touches the open face
  StageTimes times_before_;                        // at the end of the last substep of this frame
  Stopwatch since_start_, since_frame_, since_line_;
};

}  // namespace nbx
