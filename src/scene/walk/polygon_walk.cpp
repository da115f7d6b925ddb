#include "scene/walk/polygon_walk.h"

namespace nbx {

PolygonWalk::PolygonWalk(std::span<const DetachedPolygonObject> objects, const Affine3d& to_cells)
    : objects_(objects), points_(objects.size()) {
  for (std::size_t object = 0; object < objects.size(); ++object) {
    const Affine3d transform = to_cells * objects[object].to_world;
    const std::vector<Vec3d>& from = objects[object].points;
    std::vector<Vec3f>& to = points_[object];
    to.resize(from.size());
#pragma omp parallel for schedule(static)
    for (std::size_t i = 0; i < from.size(); ++i) to[i] = vector_cast<float>(transform(from[i]));
  }
}

}  // namespace nbx
