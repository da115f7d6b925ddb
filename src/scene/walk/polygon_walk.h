// Walks over all polygons of a list of meshes, triangle by triangle and in parallel. Every
// voxelizer uses it.
#pragma once

#include <exception>
#include <span>
#include <vector>

#include "scene/detached_polygon_object.h"
#include "scene/voxelization_triangle.h"

namespace nbx {

/// Meshes with their points in cells. The objects must outlive the walk.
class PolygonWalk {
 public:
  /// `to_cells` maps world coordinates to cells; it must flip the handedness, as the mirrored z
  /// axis of the grid does.
  PolygonWalk(std::span<const DetachedPolygonObject> objects, const Affine3d& to_cells);

  /// Calls body(triangle) on all threads at once, in no order: (a, c, b) for each selected polygon
  /// a, b, c, d and also (a, d, c) for a quad. The order is reversed because of the flip, so that
  /// normals point to the same side. A polygon with an invalid point index is skipped. Rethrows
  /// what body throws.
  template <class Body>
  void run(Body&& body) const;

 private:
  static constexpr std::ptrdiff_t kChunk = 64;  // polygons per unit of work

  template <class Body>
  void polygon(std::size_t object, std::size_t i, Body&& body) const;

  std::span<const DetachedPolygonObject> objects_;
  std::vector<std::vector<Vec3f>> points_;  // of each object, in cells
};

template <class Body>
void PolygonWalk::polygon(std::size_t object, std::size_t i, Body&& body) const {
  const DetachedPolygonObject& mesh = objects_[object];
  const std::vector<Vec3f>& points = points_[object];
  if (!mesh.selection.empty() && !(i < mesh.selection.size() && mesh.selection[i])) return;
  const DetachedPolygonObject::Polygon& corners = mesh.polygons[i];
  for (int c : corners)
    if (c < 0 || static_cast<std::size_t>(c) >= points.size()) return;

  VoxelizationTriangle t;
  t.surface_texture = mesh.texture.get();
  const auto set = [&](int k, int corner, Vec3f& p, Vec3f& uvw) {
    const int point = corners[corner];
    p = points[point];
    if (mesh.uvw.size() == mesh.polygons.size()) uvw = mesh.uvw[i][corner];
    if (mesh.corner_weights.size() == points.size())
      t.corner_weights[k] = mesh.corner_weights[point];
    if (mesh.first_id >= 0) t.ids[k] = mesh.first_id + point;
  };
  const auto triangle = [&](int a, int b, int c) {
    set(0, a, t.p0, t.uvw0);
    set(1, b, t.p1, t.uvw1);
    set(2, c, t.p2, t.uvw2);
    body(t);
  };
  triangle(0, 2, 1);
  if (corners[2] != corners[3]) triangle(0, 3, 2);
}

template <class Body>
void PolygonWalk::run(Body&& body) const {
  std::exception_ptr failure;
  for (std::size_t object = 0; object < objects_.size(); ++object) {
    const std::ptrdiff_t n = objects_[object].polygons.size();
#pragma omp parallel for schedule(dynamic, kChunk)
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      try {
        polygon(object, i, body);
      } catch (...) {
#pragma omp critical(polygon_walk_failure)
        failure = std::current_exception();
      }
    }
    if (failure) std::rethrow_exception(failure);
  }
}

}  // namespace nbx
