// Integer boxes in cells, for the domain, the simulated region and the extent of a source.
#pragma once

#include "math/vector.h"

namespace nbx {

/// An inclusive box: the cells lo .. hi on each axis. It is empty if lo exceeds hi on any axis. A
/// new box is empty, (1,1,1) to (0,0,0).
struct IntBox {
  Vec3i lo{1, 1, 1};
  Vec3i hi{0, 0, 0};

  constexpr bool operator==(const IntBox&) const = default;

  constexpr bool empty() const { return lo[0] > hi[0] || lo[1] > hi[1] || lo[2] > hi[2]; }

  /// Cells on each axis; 0, 0, 0 for an empty box.
  constexpr Vec3i size() const { return empty() ? Vec3i() : hi - lo + Vec3i(1, 1, 1); }

  constexpr bool contains(const Vec3i& p) const {
    for (int a = 0; a < 3; ++a)
      if (p[a] < lo[a] || p[a] > hi[a]) return false;
    return true;
  }
};

/// The smallest box that contains both; an empty box adds nothing.
constexpr IntBox box_union(const IntBox& a, const IntBox& b) {
  if (a.empty()) return b;
  if (b.empty()) return a;
  IntBox c;
  for (int i = 0; i < 3; ++i) {
    c.lo[i] = std::min(a.lo[i], b.lo[i]);
    c.hi[i] = std::max(a.hi[i], b.hi[i]);
  }
  return c;
}

/// The cells in both.
constexpr IntBox box_intersection(const IntBox& a, const IntBox& b) {
  IntBox c;
  for (int i = 0; i < 3; ++i) {
    c.lo[i] = std::max(a.lo[i], b.lo[i]);
    c.hi[i] = std::min(a.hi[i], b.hi[i]);
  }
  return c.empty() ? IntBox() : c;
}

}  // namespace nbx
