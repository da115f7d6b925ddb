// What the classes that serve a run work on; the run owns all of it.
#pragma once

#include "C4D/run/run_front_end.h"
#include "C4D/run/run_scene.h"
#include "C4D/run/run_times.h"
#include "cache/stale_frames.h"
#include "simulation/simulation3d.h"

namespace nbx {

struct RunParts {
  RunScene& scene;
  Simulation3D& sim;
  RunTimes& times;
  RunFrontEnd& front_end;
  StaleMark& stale;
};

}  // namespace nbx
