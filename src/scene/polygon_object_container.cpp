#include "scene/polygon_object_container.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include <omp.h>

namespace nbx {

namespace {

/// Whether a line of cells along some axis can meet the triangle: their bounds must overlap on the
/// two other axes. All comparisons with NaN are false.
bool can_matter(const VoxelizationTriangle& t, const IntBox& box) {
  int overlaps = 0;
  for (int a = 0; a < 3; ++a) {
    const float x = t.p0[a], y = t.p1[a], z = t.p2[a];
    if (!(std::isfinite(x) && std::isfinite(y) && std::isfinite(z))) return false;
    const auto [low, high] = std::minmax({x, y, z});
    overlaps += high >= box.lo[a] && low <= box.hi[a];
  }
  return overlaps >= 2;
}

}  // namespace

PolygonObjectContainer::PolygonObjectContainer(const PolygonWalk& walk, const IntBox& box)
    : box_(box) {
  if (box.empty()) return;
  std::vector<std::vector<Triangle>> parts(omp_get_max_threads());
  walk.run([&](const VoxelizationTriangle& t) {
    if (can_matter(t, box)) parts[omp_get_thread_num()].push_back({{t.p0, t.p1, t.p2}});
  });
  std::size_t n = 0;
  for (const auto& part : parts) n += part.size();
  triangles_.reserve(n);
  for (const auto& part : parts) triangles_.insert(triangles_.end(), part.begin(), part.end());
}

std::vector<Bounds3f> triangle_bounds(const PolygonObjectContainer& container) {
  const auto& triangles = container.triangles();
  std::vector<Bounds3f> bounds(triangles.size());
#pragma omp parallel for schedule(static)
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    const auto& [a, b, c] = triangles[i].p;
    for (int axis = 0; axis < 3; ++axis)
      std::tie(bounds[i].lo[axis], bounds[i].hi[axis]) = std::minmax({a[axis], b[axis], c[axis]});
  }
  return bounds;
}

}  // namespace nbx
