// Boxes in world coordinates.
#pragma once

#include <algorithm>
#include <limits>

#include "math/affine_transform.h"

namespace nbx {

/// Empty when new.
struct WorldBox {
  static constexpr double kFar = std::numeric_limits<double>::infinity();
  Vec3d lo{kFar, kFar, kFar}, hi{-kFar, -kFar, -kFar};

  bool empty() const { return !(lo[0] <= hi[0]); }
  void add(const Vec3d& p) {
    for (int a = 0; a < 3; ++a) {
      lo[a] = std::min(lo[a], p[a]);
      hi[a] = std::max(hi[a], p[a]);
    }
  }
  void add(const WorldBox& box) {
    if (box.empty()) return;
    add(box.lo);
    add(box.hi);
  }
  Vec3d corner(int n) const {
    return {n & 1 ? hi[0] : lo[0], n & 2 ? hi[1] : lo[1], n & 4 ? hi[2] : lo[2]};
  }
};

/// The box around the transformed corners.
inline WorldBox transformed(const Affine3d& transform, const WorldBox& box) {
  WorldBox result;
  for (int n = 0; n < 8 && !box.empty(); ++n) result.add(transform(box.corner(n)));
  return result;
}

}  // namespace nbx
