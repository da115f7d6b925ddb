// From the document to what the ray marcher traces: the volume objects of a scene, each with the
// cached frame of the document's time.
#pragma once

#include <vector>

#include "C4D/rendering/host_volume.h"
#include "host/interface/video_post.h"
#include "render/volume_renderer.h"

namespace nbx {

/// The volumes of a render, in the order of the tree: for the ray marcher, and for the host.
struct RenderVolumes {
  VolumeRenderer renderer;
  std::vector<HostVolume> hosted;
};

/// Adds all volume objects that are visible in pictures.
void collect_volumes(RenderVolumes& volumes, host::BaseObject* first);

/// Reads the step lengths of view rays from the post effect.
void read_steps(VolumeRenderer& renderer, const host::BaseVideoPost& node);

/// Prepares every volume for the time of the render's document: first the simulations that run with
/// the render, then frames and fields, then the light, which all volumes may shadow. False if the
/// user canceled. A missing frame is reported to the render, and its volume shows nothing. Throws
/// std::bad_alloc.
[[nodiscard]] bool prepare_all(RenderVolumes& volumes, host::BaseRender& render,
                               const host::BaseVideoPost& node);

/// Releases frames and fields.
void release_frames(RenderVolumes& volumes);

}  // namespace nbx
