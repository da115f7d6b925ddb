// What the weight of a cell near a surface depends on.
#pragma once

#include <algorithm>
#include <cmath>

#include "scene/source_texture.h"
#include "scene/voxelization_triangle.h"

namespace nbx {

struct ThicknessProfile {
  double thickness = 1;                           // reach in cells, above 0
  bool use_surface_texture = false;               // scale by the triangle's texture
  bool use_corner_weights = false;                // scale by the triangle's corner weights
  const VolumeTexture* volume_texture = nullptr;  // scales by the cell's place; null: nothing does

  bool plain() const { return !use_surface_texture && !use_corner_weights && !volume_texture; }

  /// 1 on the surface, falling linearly to 0 at the reach.
  float weight(double square_distance) const {
    return static_cast<float>(std::max(1 - std::sqrt(square_distance) / thickness, 0.0));
  }

  /// The factor by which the textures and the triangle's corner weights scale the cell. On the
  /// surface it is that of the nearest point of the triangle, so it never leaves the range of the
  /// triangle's own values, however small the triangle.
  float scale(const VoxelizationTriangle& triangle, const Vec3i& cell) const;
};

/// Coordinates (alpha, beta, gamma), with sum 1 and none below 0, of the point of the triangle that
/// is nearest to `point`: it is alpha p0 + beta p1 + gamma p2. A triangle without area gives
/// (1, 0, 0).
Vec3d nearest_in_triangle(const VoxelizationTriangle& triangle, const Vec3d& point);

}  // namespace nbx
