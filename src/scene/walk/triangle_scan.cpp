#include "scene/walk/triangle_scan.h"

namespace nbx {

namespace {

constexpr double kSmallestSquareEdge = 1e-6;
constexpr double kSlack = TriangleScan::kSlack;
// An area below this share of the square of the longest edge is rounding error, and so is its
// normal.
constexpr double kSmallestShare = 1e-12;

bool finite(const Vec3f& p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// A division, not a product with the inverse: it makes normals along an axis exact, and so the
/// distances to surfaces along the grid.
Vec3d divided(const Vec3d& v, double by) { return {v[0] / by, v[1] / by, v[2] / by}; }

}  // namespace

IntBox scan_box(const VoxelizationTriangle& triangle, double reach, const IntBox& target) {
  const Vec3f &p0 = triangle.p0, &p1 = triangle.p1, &p2 = triangle.p2;
  if (target.empty() || !finite(p0) || !finite(p1) || !finite(p2)) return {};
  IntBox box;
  for (int a = 0; a < 3; ++a) {
    const auto [low, high] = std::minmax({p0[a], p1[a], p2[a]});
    // Clamp before the conversion to int.
    const double lo = std::max<double>(std::ceil(low - reach - kSlack), target.lo[a]);
    const double hi = std::min<double>(std::floor(high + reach + kSlack), target.hi[a]);
    if (lo > hi) return {};
    box.lo[a] = static_cast<int>(lo);
    box.hi[a] = static_cast<int>(hi);
  }
  return box;
}

TriangleScan::TriangleScan(const VoxelizationTriangle& triangle, double reach, const IntBox& target)
    : p_{vector_cast<double>(triangle.p0), vector_cast<double>(triangle.p1),
         vector_cast<double>(triangle.p2)},
      reach_(reach),
      box_(scan_box(triangle, reach, target)) {
  if (!box_.empty() && !set_functions()) box_ = IntBox();
}

bool TriangleScan::set_functions() {
  const std::array<Vec3d, 3> e{p_[0] - p_[2], p_[1] - p_[0], p_[2] - p_[1]};
  double longest = 0;
  for (const Vec3d& edge : e) {
    if (dot(edge, edge) <= kSmallestSquareEdge) return false;
    longest = std::max(longest, dot(edge, edge));
  }
  const Vec3d area = cross(e[1], -e[0]);
  if (length(area) <= kSmallestShare * longest) return false;
  normal_ = divided(area, length(area));

  const auto set = [&](int f, const Vec3d& g, const Vec3d& origin) {
    const auto i = static_cast<std::size_t>(f);
    low_[i] = dot(g, vector_cast<double>(box_.lo) - origin);
    for (std::size_t a = 0; a < 3; ++a) gradient_[a][i] = g[static_cast<int>(a)];
  };
  set(kD, normal_, p_[0]);
  for (int i = 0; i < 3; ++i) {
    const auto edge = static_cast<std::size_t>(i);
    const Vec3d& origin = p_[(edge + 2) % 3];  // p2, p0, p1
    const Vec3d inward = cross(normal_, e[edge]);
    set(kA0 + i, divided(e[edge], dot(e[edge], e[edge])), origin);
    set(kB0 + i, divided(inward, length(inward)), origin);
  }
  return true;
}

}  // namespace nbx
