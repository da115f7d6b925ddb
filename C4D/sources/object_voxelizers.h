// Copies meshes of the host into the records that voxelizers walk.
#pragma once

#include <vector>

#include "C4D/sources/source_tags.h"
#include "scene/detached_polygon_object.h"

namespace nbx {

/// A copy of the mesh, or of its selected polygons, at the document's time. `channel` is the number
/// of the host::MaterialChannel that scales a source on the mesh, -1 for none. The copy gets a
/// texture that reads this channel as a renderer does; it is valid until the document is evaluated
/// again. A mesh whose material lacks the channel gets none. Outside of a material that isn't tiled
/// the texture is 0.
DetachedPolygonObject detach(const SourceMesh& mesh, int channel);

std::vector<DetachedPolygonObject> detach(const std::vector<SourceMesh>& meshes, int channel);

}  // namespace nbx
