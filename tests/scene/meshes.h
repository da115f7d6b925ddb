// Meshes for the tests of voxelizers, with plain forms of distance and winding number.
#pragma once

#include <algorithm>
#include <numbers>

#include "scene/walk/polygon_walk.h"
#include "support/support.h"

namespace nbx::test {

using Mesh = DetachedPolygonObject;

/// World to cells: the mirror that a walk expects. Tests place their meshes by it too, so that
/// their points are in cells.
inline Affine3d mirror() {
  Affine3d m = Affine3d::identity();
  m.rows[2][2] = -1;
  return m;
}

inline Mesh in_cells(Mesh mesh) {
  mesh.to_world = mirror();
  return mesh;
}

inline PolygonWalk walk(const std::vector<Mesh>& meshes) { return {meshes, mirror()}; }

inline Mesh box(const Vec3d& lo, const Vec3d& hi) {
  Mesh m;
  for (int i = 0; i < 8; ++i)
    m.points.emplace_back(i & 1 ? hi[0] : lo[0], i & 2 ? hi[1] : lo[1], i & 4 ? hi[2] : lo[2]);
  m.polygons = {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 4, 5, 1}, {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 5, 7, 3}};
  return in_cells(m);
}

/// A torus of n x m quads, bent so that no two look alike.
inline Mesh bent_torus(const Vec3d& center, double radius, double tube, int n, int m) {
  Mesh mesh;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < m; ++j) {
      const double a = 2 * std::numbers::pi * i / n, b = 2 * std::numbers::pi * j / m;
      const double r = radius + tube * (std::cos(b) + 0.1 * std::sin(7 * a) * std::cos(5 * b));
      mesh.points.push_back(center + Vec3d(r * std::cos(a), r * std::sin(a),
                                           tube * std::sin(b) + 0.2 * radius * std::sin(2 * a)));
      const int i1 = (i + 1) % n, j1 = (j + 1) % m;
      mesh.polygons.push_back({i * m + j, i1 * m + j, i1 * m + j1, i * m + j1});
    }
  return in_cells(mesh);
}

/// The distance from a point to a triangle without regions or increments: to the plane where the
/// foot lies inside, else to the nearest of the three segments.
inline double square_distance_to_triangle(const Vec3d& c, const VoxelizationTriangle& triangle) {
  const Vec3d p[3] = {vector_cast<double>(triangle.p0), vector_cast<double>(triangle.p1),
                      vector_cast<double>(triangle.p2)};
  const Vec3d n = cross(p[1] - p[0], p[2] - p[0]);
  bool inside = true;
  double q = 1e300;
  for (int i = 0; i < 3; ++i) {
    const Vec3d r = c - p[i], edge = p[(i + 1) % 3] - p[i];
    inside = inside && dot(cross(edge, r), n) >= 0;
    const Vec3d way = r - edge * std::clamp(dot(r, edge) / dot(edge, edge), 0.0, 1.0);
    q = std::min(q, dot(way, way));
  }
  const double d = dot(c - p[0], n);
  return inside ? d * d / dot(n, n) : q;
}

/// How often the triangles wind round the point (van Oosterom and Strackee, The solid angle of a
/// plane triangle, 1983); a whole number for closed meshes.
inline double winding(const PolygonWalk& triangles, const Vec3d& point) {
  double sum = 0;
  const ThreadCount one(1);
  triangles.run([&](const VoxelizationTriangle& t) {
    const Vec3d a = vector_cast<double>(t.p0) - point, b = vector_cast<double>(t.p1) - point,
                c = vector_cast<double>(t.p2) - point;
    const double la = length(a), lb = length(b), lc = length(c);
    sum += 2 * std::atan2(dot(a, cross(b, c)),
                          la * lb * lc + dot(a, b) * lc + dot(b, c) * la + dot(c, a) * lb);
  });
  return sum / (4 * std::numbers::pi);
}

}  // namespace nbx::test
