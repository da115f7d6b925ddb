// A volume of a render with what belongs to it on the host's side.
#pragma once

#include <memory>
#include <vector>

#include "C4D/rendering/frame_placement.h"
#include "C4D/run/simulation_thread.h"
#include "cache/slot_handle.h"
#include "host/interface/video_post.h"
#include "render/render_volume.h"

namespace nbx {

/// A run that a render carries along.
struct RenderSimulation {
  /// The renderer, as evaluations of the document know it. It never starts.
  class Thread final : public host::C4DThread {
   public:
    explicit Thread(const host::BaseRender& render) : render_(render) {}
    std::string GetThreadName() const override { return "Nimbrix Render"; }
    bool TestBreak() const override { return render_.TestBreak(); }

   protected:
    void Main() override {}

   private:
    const host::BaseRender& render_;
  };

  explicit RenderSimulation(const host::BaseRender& render) : thread(render) {}
  Thread thread;
  SimulationThread run;
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
