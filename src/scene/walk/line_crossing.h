// Where a line of cells crosses a triangle. The crossings of a closed surface always come in pairs.
//
// The line is shifted by an infinitely small (e, e^2) in the plane across it (Edelsbrunner and
// Muecke, Simulation of simplicity, 1990). So it never meets an edge or a corner. The two triangles
// at an edge evaluate it with the same rounding and opposite sign: the line crosses exactly one of
// them, or at a fold both or none.
#pragma once

#include <algorithm>
#include <array>
#include <optional>

#include "math/vector.h"

namespace nbx {

/// The side of the edge a -> b on which the point lies, and twice the signed area of the three
/// points. The sign is 0 only for an edge without length.
struct EdgeSide {
  double area;
  int sign;
};

inline EdgeSide edge_side(const std::array<double, 2>& a, const std::array<double, 2>& b,
                          const std::array<double, 2>& point) {
  const double au = a[0] - point[0], av = a[1] - point[1];
  const double bu = b[0] - point[0], bv = b[1] - point[1];
  const double area = au * bv - bu * av;
  if (area != 0) return {area, area > 0 ? 1 : -1};
  // d area / d u = av - bv, then d area / d v = bu - au
  const double change = av != bv ? av - bv : bu - au;
  return {0, change > 0 ? 1 : change < 0 ? -1 : 0};
}

/// The coordinate along `axis` at which the line through `cell` crosses the triangle, if it does.
inline std::optional<double> line_crossing(const std::array<Vec3f, 3>& p, int axis,
                                           const Vec3i& cell) {
  const int u = (axis + 1) % 3, v = (axis + 2) % 3;
  const std::array<double, 2> point{1.0 * cell[u], 1.0 * cell[v]};
  std::array<std::array<double, 2>, 3> flat;
  for (std::size_t i = 0; i < 3; ++i) flat[i] = {p[i][u], p[i][v]};

  const EdgeSide s0 = edge_side(flat[1], flat[2], point);
  const EdgeSide s1 = edge_side(flat[2], flat[0], point);
  if (s0.sign != s1.sign) return {};
  const EdgeSide s2 = edge_side(flat[0], flat[1], point);
  if (s0.sign != s2.sign || s0.sign == 0) return {};
  const double area = s0.area + s1.area + s2.area;
  if (area == 0) return {};
  const double t = (s0.area * p[0][axis] + s1.area * p[1][axis] + s2.area * p[2][axis]) / area;
  const auto [low, high] = std::minmax({p[0][axis], p[1][axis], p[2][axis]});
  return std::clamp<double>(t, low, high);
}

}  // namespace nbx
