// From the document to what the ray marcher traces: the volume objects of a scene, each with the
// cached frame of the document's time.
#pragma once

#include "host/interface/video_post.h"
#include "render/volume_renderer.h"

namespace nbx {

/// All volume objects that pictures show, in the order of the tree.
void collect_volumes(VolumeRenderer& renderer, host::BaseObject* first);

/// Brings every volume to the document's time: first the runs of those that simulate, then frames
/// and fields, then the light, which shines through all of them. `render` is null in previews,
/// which neither simulate nor have light. False if the user broke it off.
/// A frame that isn't there is told to the render, and its volume shows nothing. Throws
/// std::bad_alloc.
[[nodiscard]] bool prepare_all(VolumeRenderer& renderer, host::BaseRender* render,
                               const host::BaseDocument& document, const host::BaseVideoPost& node);

/// Lets frames and fields go.
void release_frames(VolumeRenderer& renderer);

}  // namespace nbx
