#include "scene/walk/thickness_profile.h"

#include <limits>

namespace nbx {

Vec3d nearest_in_triangle(const VoxelizationTriangle& triangle, const Vec3d& point) {
  const std::array<Vec3d, 3> p{vector_cast<double>(triangle.p0), vector_cast<double>(triangle.p1),
                               vector_cast<double>(triangle.p2)};
  const Vec3d u = p[1] - p[0], v = p[2] - p[0], w = point - p[0], n = cross(u, v);
  const double square = dot(n, n);
  if (!(square > 0)) return {1, 0, 0};
  // The foot of the perpendicular, if it lies within.
  const double beta = dot(cross(w, v), n) / square, gamma = dot(cross(u, w), n) / square;
  const double alpha = 1 - beta - gamma;
  if (alpha >= 0 && beta >= 0 && gamma >= 0) return {alpha, beta, gamma};

  // Else the nearest point of the three edges.
  Vec3d nearest{1, 0, 0};
  double least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 3; ++i) {
    const int j = (i + 1) % 3;
    const Vec3d &from = p[i], edge = p[j] - from;
    const double share = std::clamp(dot(point - from, edge) / dot(edge, edge), 0.0, 1.0);
    const Vec3d away = point - from - edge * share;
    if (!(dot(away, away) < least)) continue;
    least = dot(away, away);
    nearest = Vec3d();
    nearest[i] = 1 - share;
    nearest[j] = share;
  }
  return nearest;
}

float ThicknessProfile::scale(const VoxelizationTriangle& triangle, const Vec3i& cell) const {
  float scale = volume_texture ? volume_texture->value(cell) : 1;
  const bool textured = use_surface_texture && triangle.surface_texture;
  if (!textured && !use_corner_weights) return scale;
  const Vec3f at = vector_cast<float>(nearest_in_triangle(triangle, vector_cast<double>(cell)));
  if (textured)
    scale *= triangle.surface_texture->value(at[0] * triangle.uvw0 + at[1] * triangle.uvw1 +
                                             at[2] * triangle.uvw2);
  const auto& w = triangle.corner_weights;
  if (use_corner_weights) scale *= at[0] * w[0] + at[1] * w[1] + at[2] * w[2];
  return scale;
}

}  // namespace nbx
