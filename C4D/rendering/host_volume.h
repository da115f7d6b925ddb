// The host's side of a volume in a render.
#pragma once

#include <memory>

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

struct HostVolume {
  explicit HostVolume(host::BaseObject& from) : object(&from) {}

  host::BaseObject* object;
  /// The same volume as the ray marcher sees it.
  std::shared_ptr<RenderVolume> traced = std::make_shared<RenderVolume>();
  FramePlacement placement;
  SlotHandle frame;                              // held while the render's frame is open
  bool simulates = false;                        // in this sequence; off once a run has failed
  std::unique_ptr<RenderSimulation> simulation;  // from its first frame to the sequence's end
};

}  // namespace nbx
