#include "scene/thickness_profile.h"

#include "scene/surface_texture.h"

namespace nbx {

Vec3d barycentric(const VoxelizationTriangle& triangle, const Vec3d& point) {
  const Vec3d p0 = vector_cast<double>(triangle.p0);
  const Vec3d u = vector_cast<double>(triangle.p1) - p0, v = vector_cast<double>(triangle.p2) - p0;
  const Vec3d w = point - p0, n = cross(u, v);
  const double square = dot(n, n);
  if (!(square > 0)) return {1, 0, 0};
  const double beta = dot(cross(w, v), n) / square, gamma = dot(cross(u, w), n) / square;
  return {1 - beta - gamma, beta, gamma};
}

float ThicknessProfile::surface_scale(const VoxelizationTriangle& triangle,
                                      const Vec3d& cell) const {
  const Vec3f at = vector_cast<float>(barycentric(triangle, cell));
  float scale = 1;
  if (use_surface_texture && triangle.surface_texture)
    scale *= triangle.surface_texture->value(at[0] * triangle.uvw0 + at[1] * triangle.uvw1 +
                                             at[2] * triangle.uvw2);
  const auto& w = triangle.corner_weights;
  if (use_corner_weights) scale *= at[0] * w[0] + at[1] * w[1] + at[2] * w[2];
  return scale;
}

}  // namespace nbx
