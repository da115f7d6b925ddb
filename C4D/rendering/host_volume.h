// A volume of a render with what belongs to it on the host's side.
#pragma once

#include <memory>
#include <vector>

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

/// What the post effect puts into VolumeRenderer::volumes.
struct HostVolume final : RenderVolume {
  host::BaseObject* object = nullptr;
  FramePlacement placement;
  SlotHandle frame;                              // held while the render's frame is open
  std::vector<bool> excludedBy;                  // by light: it doesn't shine on this volume
  bool simulates = false;                        // in this sequence; off once a run has failed
  std::unique_ptr<RenderSimulation> simulation;  // from its first frame to the sequence's end
};

inline HostVolume& host_volume(RenderVolume& volume) { return static_cast<HostVolume&>(volume); }

}  // namespace nbx
