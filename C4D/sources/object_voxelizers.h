// The host's meshes as the records that voxelizers walk.
#pragma once

#include <vector>

#include "C4D/sources/source_tags.h"
#include "scene/detached_polygon_object.h"

namespace nbx {

/// A copy of the mesh, or of the polygons that are selected of it, in the world at the document's
/// time. `channel` is the number of the host::MaterialChannel that scales a source on the mesh, -1
/// for none: the copy then has the picture of it, which reads the material as a renderer does and
/// lasts until the document is evaluated again. A mesh whose material lacks the channel has none;
/// where a material that isn't tiled ends, the picture is 0.
DetachedPolygonObject detach(const SourceMesh& mesh, int channel);

std::vector<DetachedPolygonObject> detach(const std::vector<SourceMesh>& meshes, int channel);

}  // namespace nbx
