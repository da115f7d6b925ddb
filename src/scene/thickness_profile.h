// What the weight of a cell near a surface depends on.
#pragma once

#include <algorithm>
#include <cmath>

#include "scene/voxelization_triangle.h"

namespace nbx {

struct ThicknessProfile {
  double thickness = 1;              // reach in cells, above 0
  bool use_surface_texture = false;  // scale by the triangle's texture
  bool use_corner_weights = false;   // scale by the triangle's corner weights

  bool plain() const { return !use_surface_texture && !use_corner_weights; }

  /// 1 on the surface, falling linearly to 0 at the reach.
  float weight(double square_distance) const {
    return static_cast<float>(std::max(1 - std::sqrt(square_distance) / thickness, 0.0));
  }

  /// The factor by which a triangle's texture and corner weights scale the cell, taken where the
  /// cell projects along the triangle's normal. Beyond the triangle's edges both go on linearly.
  float surface_scale(const VoxelizationTriangle& triangle, const Vec3d& cell) const;
};

/// Coordinates (alpha, beta, gamma), with sum 1, of a point projected along the triangle's normal:
/// the point is alpha p0 + beta p1 + gamma p2. A triangle without area gives (1, 0, 0).
Vec3d barycentric(const VoxelizationTriangle& triangle, const Vec3d& point);

}  // namespace nbx
