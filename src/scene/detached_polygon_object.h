// A copy of a mesh of the host: any number of threads may walk it, and it outlives the evaluation
// of the scene by the host.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "math/affine_transform.h"
#include "scene/source_texture.h"

namespace nbx {

struct DetachedPolygonObject {
  using Polygon = std::array<int, 4>;  // indices of points; a triangle repeats its third corner

  std::vector<Vec3d> points;  // in the object's space
  std::vector<Polygon> polygons;
  Affine3d to_world = Affine3d::identity();

  // Optional: empty, or one entry for each polygon's corner, point or polygon.
  std::vector<std::array<Vec3f, 4>> uvw;  // per polygon
  std::vector<float> corner_weights;      // per point
  std::vector<bool> selection;            // per polygon: others are skipped
  std::shared_ptr<const SurfaceTexture> texture;

  int first_id = -1;  // running index of the first point; -1: the points have no ids

  bool operator==(const DetachedPolygonObject&) const = default;
};

}  // namespace nbx
