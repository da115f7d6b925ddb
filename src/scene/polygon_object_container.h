// The triangles of a list of meshes, in cells, for finding what lies inside of them.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "math/int_box.h"
#include "math/kdtree.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

class PolygonObjectContainer {
 public:
  /// Takes the triangles of the walk that can matter for the cells of `box`: those that some grid
  /// line through a cell of the box can meet. Corners that aren't finite leave their triangle out.
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

/// The bounds of each triangle, for a tree over them.
std::vector<Bounds3f> triangle_bounds(const PolygonObjectContainer& container);

}  // namespace nbx
