// What the user sees of a run while it goes on: progress lines, and events for programs.
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

  /// A point within the frame after `frame`: `done` of `total` parts are through. Cheap: most calls
  /// show nothing.
  void step(int frame, const StepClock& step, int steps_remaining, int done, int total);

  /// The end of a substep of the frame after `frame`.
  void substep(int frame, const Simulation3D& sim);

  /// A whole frame, handed over to the cache.
  void frame(int number, Simulation3D& sim);

  /// Frames that didn't reach the disk.
  void lost(const std::vector<LostFrame>& frames);

  /// "; gas leaves through x+ from frame 31", or nothing.
  std::string losses() const;

  int frames_done() const { return frames_done_; }
  int frames_lost() const { return frames_lost_; }
  double seconds() const { return since_start_.seconds(); }

 private:
  std::string line(int number, double frames_done) const;
  void note_losses(int number, Simulation3D& sim);

  host::CommandContext& context_;
  const int frames_total_;
  int frames_done_ = 0;
  int frames_lost_ = 0;
  std::array<std::optional<int>, 6> leaves_from_;  // frame that first reached the open face
  StageTimes times_before_;                        // when the last substep of this frame ended
  Stopwatch since_start_, since_frame_, since_line_;
};

}  // namespace nbx
