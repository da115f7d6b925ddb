// The host's meshes as the records that voxelizers walk.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "C4D/source_tags.h"
#include "scene/detached_polygon_object.h"

namespace nbx {

/// Pictures of the materials' channels on meshes, each made once in the life of this object.
class SurfaceTextures {
 public:
  /// `channel` is a number of host::MaterialChannel; time in seconds.
  SurfaceTextures(int channel, double time) : channel_(channel), time_(time) {}

  /// The channel of the material that the object shows; null if it shows none that has the channel.
  std::shared_ptr<const SurfaceTexture> find(host::BaseObject& object);

 private:
  const int channel_;
  const double time_;
  std::map<const host::BaseTag*, std::shared_ptr<const SurfaceTexture>> made_;  // by texture tag
};

/// A copy of the mesh, or of the polygons that are selected of it, in the world at the document's
/// time. `textures` may be null.
DetachedPolygonObject detach(const SourceMesh& mesh, SurfaceTextures* textures);

std::vector<DetachedPolygonObject> detach(const std::vector<SourceMesh>& meshes,
                                          SurfaceTextures* textures);

}  // namespace nbx
