// What the user sees of a run while it goes on: progress lines, and events for programs.
#pragma once

#include <string>

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
  void step(int frame, const SimSettings& settings, int steps_remaining, int done, int total);

  /// A whole frame. `error` tells why it isn't on disk; empty if it is.
  void frame(int number, const SimSettings& settings, const std::string& error);

  int frames_done() const { return frames_done_; }
  int frames_lost() const { return frames_lost_; }
  double seconds() const { return since_start_.seconds(); }

 private:
  std::string line(int number, double frames_done) const;

  host::CommandContext& context_;
  const int frames_total_;
  int frames_done_ = 0;
  int frames_lost_ = 0;
  Stopwatch since_start_, since_frame_, since_line_;
};

}  // namespace nbx
