// The distance from a point to a triangle without regions or increments: to the plane where the
// foot lies inside, else to the nearest of the three segments.
#pragma once

#include <algorithm>

#include "scene/voxelization_triangle.h"

namespace nbx::test {

inline double square_distance_to_segment(const Vec3d& c, const Vec3d& a, const Vec3d& b) {
  const double t = std::clamp(dot(c - a, b - a) / dot(b - a, b - a), 0.0, 1.0);
  const Vec3d r = c - (a + (b - a) * t);
  return dot(r, r);
}

inline double square_distance_to_triangle(const Vec3d& c, const VoxelizationTriangle& triangle) {
  const Vec3d p[3] = {vector_cast<double>(triangle.p0), vector_cast<double>(triangle.p1),
                      vector_cast<double>(triangle.p2)};
  const Vec3d n = cross(p[1] - p[0], p[2] - p[0]);
  bool inside = true;
  double q = 1e300;
  for (int i = 0; i < 3; ++i) {
    const Vec3d &a = p[i], &b = p[(i + 1) % 3];
    inside = inside && dot(cross(b - a, c - a), n) >= 0;
    q = std::min(q, square_distance_to_segment(c, a, b));
  }
  const double d = dot(c - p[0], n);
  return inside ? d * d / dot(n, n) : q;
}

}  // namespace nbx::test
