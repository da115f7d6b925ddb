// The time of a run. The driver of the run sets it between frames, Simulation3D::update within a
// frame.
#pragma once

#include "cache/frame_time.h"

namespace nbx {

/// Simulation time is the time of the document times `time_scale`.
struct StepClock {
  FrameTime sim_time;         // start of the current frame and its length, in simulation time
  double frame_duration = 1;  // seconds of a frame of the document: the unit of decay and drag
  int frame = 0;              // its number in the document
  int step_index = 0;         // substeps done in this frame
  double frame_elapsed = 0;   // seconds of simulation time already done in this frame
  double dt = 0;              // length of the current substep in seconds; 0 for the first frame

  /// Simulation time at the start of the substep, in seconds.
  double now() const { return sim_time.time.value() + frame_elapsed; }
  /// The substep's share of a frame.
  double share_of_frame() const { return dt / frame_duration; }
};

}  // namespace nbx
