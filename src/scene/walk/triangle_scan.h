// Visits every cell whose center lies within a reach of a triangle, with the exact squared
// distance. All voxelizers share it.
//
// The distance comes from the Voronoi regions of the triangle (Ericson, Real-Time Collision
// Detection, 2005, 5.1.5). With the edges e0 = p0 - p2, e1 = p1 - p0, e2 = p2 - p1, seven functions
// of a point c give its region:
//
//     d   signed distance from the plane
//     ai  position along edge i, 0 at its first corner, 1 at its second
//     bi  distance from edge i's line in the plane, negative outside
//
//                  \  a0 > 1 |
//                   \ a1 < 0 |                  face:   all b >= 0      q = d^2
//                    p0------|---------         edge i: bi < 0,
//          b0 < 0   /  \   b1 < 0                       0 <= ai <= 1    q = d^2 + bi^2
//                 e0    e1                      corner                  q = |c - p|^2
//                 /      \ .
//               p2 --e2-- p1
//
// All seven are linear, so a step from cell to cell adds their gradients. They are kept in double:
// n steps at magnitude m err by at most 1.1e-16 n m, which is 1e-10 cells in a domain of a thousand
// cells a side and below 1e-3 in the largest that a sparse field can hold. Floats would be off by
// 0.06 cells in the former.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "math/int_box.h"
#include "scene/voxelization_triangle.h"

namespace nbx {

/// The cells of `target` in the triangle's bounds grown by the reach; empty if there are none or a
/// corner isn't finite.
IntBox scan_box(const VoxelizationTriangle& triangle, double reach, const IntBox& target);

/// A prepared triangle.
class TriangleScan {
 public:
  /// Bounds are widened by so many cells, so that rounding doesn't lose a cell at the reach.
  static constexpr double kSlack = 1e-6;

  /// For the cells of `target` within `reach` cells of the triangle. Visits nothing if a corner
  /// isn't finite or the triangle is degenerate: a squared edge of at most 1e-6, or an area of
  /// rounding error.
  TriangleScan(const VoxelizationTriangle& triangle, double reach, const IntBox& target);

  /// The cells that can be hit; empty if none can.
  const IntBox& box() const { return box_; }

  /// Unit length; undefined where the box is empty.
  const Vec3d& normal() const { return normal_; }

  /// Calls hit(x, y, z, q, d) for each cell with q <= reach^2: q the squared distance of its center
  /// from the triangle, d the signed one from its plane, positive where the corners run
  /// counter-clockwise.
  template <class Hit>
  void run(Hit&& hit) const;

 private:
  enum Function { kD, kA0, kA1, kA2, kB0, kB1, kB2, kFunctions };
  using Values = std::array<double, kFunctions>;

  static void step(Values& v, const Values& gradient, double steps = 1) {
    for (std::size_t f = 0; f < kFunctions; ++f) v[f] += steps * gradient[f];
  }

  bool set_functions();
  bool clip_row(double d, int& first, int& last) const;
  double square_distance(const Values& v, const Vec3d& cell) const;

  std::array<Vec3d, 3> p_;
  double reach_;
  IntBox box_;
  Vec3d normal_;
  Values low_{};                      // at the low corner of the box
  std::array<Values, 3> gradient_{};  // per axis
};

/// The part of a row, as offsets from the box's low x, in which |d| can be within reach.
inline bool TriangleScan::clip_row(double d, int& first, int& last) const {
  const double g = gradient_[0][kD], cells = box_.hi[0] - box_.lo[0];
  first = 0;
  last = box_.hi[0] - box_.lo[0];
  if (g == 0) return std::abs(d) <= reach_;
  const double s = (-reach_ - d) / g, t = (reach_ - d) / g;
  const double lo = std::ceil(std::min(s, t) - kSlack), hi = std::floor(std::max(s, t) + kSlack);
  if (!(lo <= hi && lo <= cells && hi >= 0)) return false;
  first = static_cast<int>(std::max(lo, 0.0));
  last = static_cast<int>(std::min(hi, cells));
  return true;
}

inline double TriangleScan::square_distance(const Values& v, const Vec3d& cell) const {
  const auto square_to = [&](int corner) {
    const Vec3d r = cell - p_[corner];
    return dot(r, r);
  };
  const double dd = v[kD] * v[kD];
  if (v[kB0] >= 0 && v[kB1] >= 0 && v[kB2] >= 0) return dd;
  if (v[kB0] < 0 && v[kA0] >= 0 && v[kA0] <= 1) return dd + v[kB0] * v[kB0];
  if (v[kB2] < 0 && v[kA2] >= 0 && v[kA2] <= 1) return dd + v[kB2] * v[kB2];
  if (v[kB1] < 0 && v[kA1] >= 0 && v[kA1] <= 1) return dd + v[kB1] * v[kB1];
  if (v[kA1] < 0 && v[kA0] > 1) return square_to(0);
  if (v[kA0] < 0 && v[kA2] > 1) return square_to(2);
  if (v[kA2] < 0 && v[kA1] > 1) return square_to(1);
  return dd;  // the nearest point is a corner; rounding has put c into no region
}

template <class Hit>
void TriangleScan::run(Hit&& hit) const {
  if (box_.empty()) return;
  Values plane = low_;
  for (int z = box_.lo[2]; z <= box_.hi[2]; ++z, step(plane, gradient_[2])) {
    Values row = plane;
    for (int y = box_.lo[1]; y <= box_.hi[1]; ++y, step(row, gradient_[1])) {
      int first, last;
      if (!clip_row(row[kD], first, last)) continue;
      Values v = row;
      step(v, gradient_[0], first);
      for (int x = box_.lo[0] + first; x <= box_.lo[0] + last; ++x, step(v, gradient_[0])) {
        if (std::abs(v[kD]) > reach_) continue;
        const double q = square_distance(v, Vec3d(x, y, z));
        if (q <= reach_ * reach_) hit(x, y, z, q, v[kD]);
      }
    }
  }
}

}  // namespace nbx
