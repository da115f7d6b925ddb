// The host's side of a volume in a render.
#pragma once

#include <memory>

#include "C4D/rendering/frame_placement.h"
#include "C4D/rendering/render_front_end.h"
#include "C4D/run/simulation_run.h"
#include "cache/slot_handle.h"
#include "host/interface/video_post.h"
#include "render/render_volume.h"

namespace nbx {

/// A run that a render carries along.
struct RenderSimulation {
  RenderSimulation(host::BaseObject& volume, host::BaseRender& render)
      : front_end(volume, render), run(&volume, {}, front_end) {}
  RenderFrontEnd front_end;
  SimulationRun run;
};

struct HostVolume {
  explicit HostVolume(host::BaseObject& from) : object(&from) {}

  host::BaseObject* object;
  /// The same volume as the ray marcher sees it.
  std::shared_ptr<RenderVolume> traced = std::make_shared<RenderVolume>();
  FramePlacement placement;
  bool warned_of_stale = false;                  // that a frame is from an earlier run
  SlotHandle frame;                              // held while the render's frame is open
  bool simulates = false;                        // in this sequence; off once a run has failed
  std::unique_ptr<RenderSimulation> simulation;  // from its first frame to the sequence's end
};

}  // namespace nbx
