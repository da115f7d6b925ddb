// The triangles of a list of meshes, in cells, for finding the cells inside of them.
#pragma once

#include <array>
#include <vector>

#include "math/int_box.h"
#include "math/kdtree.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

class PolygonObjectContainer {
 public:
  /// Keeps the triangles of the walk that a grid line through a cell of `box` can meet. A triangle
  /// with a corner that isn't finite is left out.
  PolygonObjectContainer(const PolygonWalk& walk, const IntBox& box);

  struct Triangle {
    std::array<Vec3f, 3> p;
  };

  const std::vector<Triangle>& triangles() const { return triangles_; }
  const IntBox& box() const { return box_; }

 private:
  std::vector<Triangle> triangles_;
  IntBox box_;
};

/// The bounds of each triangle, for a kd-tree.
std::vector<Bounds3f> triangle_bounds(const PolygonObjectContainer& container);

}  // namespace nbx
