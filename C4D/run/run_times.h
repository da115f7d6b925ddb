// The times of a run, in the document.
#pragma once

#include "C4D/run/states/state_notes.h"
#include "cache/frame_time.h"
#include "host/interface/scene.h"

namespace nbx {

struct RunTimes {
  FrameTime start, end;  // first and last frame of the range
  FrameTime now;         // the last finished frame

  bool at_end() const { return !fraction_less(now.time, end.time); }
  RunRange range() const { return {start.time, end.time}; }
};

/// The range that the volume's parameters select, with `now` at its start.
RunTimes run_times(const host::BaseObject& volume);

}  // namespace nbx
