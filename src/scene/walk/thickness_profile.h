// The weight of a cell near a surface.
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
  const VolumeTexture* volume_texture = nullptr;  // scales by the place of the cell; may be null

  bool operator==(const ThicknessProfile&) const = default;
  bool plain() const { return !use_surface_texture && !use_corner_weights && !volume_texture; }

  /// 1 on the surface, falling linearly to 0 at the reach.
  float weight(double square_distance) const {
    return std::max(1 - std::sqrt(square_distance) / thickness, 0.0);
  }

  /// The factor of the textures and the corner weights for the cell. Values on the surface are
  /// those at the nearest point of the triangle, so they never leave the range of its corners,
  /// however small the triangle.
  float scale(const VoxelizationTriangle& triangle, const Vec3i& cell) const;
};

/// Coordinates (alpha, beta, gamma), with sum 1 and none below 0, of the point of the triangle that
/// is nearest to `point`: it is alpha p0 + beta p1 + gamma p2. A triangle without area gives
/// (1, 0, 0).
Vec3d nearest_in_triangle(const VoxelizationTriangle& triangle, const Vec3d& point);

}  // namespace nbx
