// A volume of a render with what belongs to it on the host's side.
#pragma once

#include <vector>

#include "cache/slot_handle.h"
#include "host/interface/scene.h"
#include "render/render_volume.h"

namespace nbx {

/// What the post effect puts into VolumeRenderer::volumes.
struct HostVolume final : RenderVolume {
  host::BaseObject* object = nullptr;
  SlotHandle frame;              // held while the render's frame is open
  std::vector<bool> excludedBy;  // by light: it doesn't shine on this volume
};

}  // namespace nbx
