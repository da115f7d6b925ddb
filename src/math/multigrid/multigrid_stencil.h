// The 7-point stencil on the split rows of a level, for the kernel files of the solver.
//
// One half of a row holds cells of one color. The pointers of a HalfRow point to its first interior
// cell and to the neighbors of that cell:
//
//               north                high
//                 |                 /
//       west --- x(c) --- east     c      east = west + 1 in the other half of the row
//                 |               /
//               south           low
//
// (A x)(c) = center x(c) - (w west + e east + s south + n north + l low + h high), where center is
// the sum of the six weights. Sums run in double, in the order in which neighbor_sum has them.
#pragma once

#include <cstring>

#include "math/lanes/double_lanes.h"
#include "math/multigrid/multigrid_level.h"

namespace nbx::NBX_ISA {

struct HalfRow {
  float* x;
  const float *b, *west, *south, *north, *low, *high;
  int count;  // cells
};

inline HalfRow half_row(const LevelGrid& g, int j, int k, int parity) {
  // Interior cells are i = 2, 4, .. in the even half and i = 1, 3, .. in the odd one.
  const std::ptrdiff_t row = g.row(j, k), first = row + (parity ? g.odd() : 1);
  float* x = g.x + first;
  return {x,
          g.b + first,
          g.x + row + (parity ? 0 : g.odd()),
          x - g.nx,
          x + g.nx,
          x - g.plane(),
          x + g.plane(),
          (g.nx - 2 + parity) / 2};
}

/// Weights of the neighbors of a cell, and their sum. All are 1, except in the last layers of a
/// level whose last interval has another width.
struct Weights {
  double w = 1, e = 1, s = 1, n = 1, l = 1, h = 1, center = 6;
};

inline Weights weights(const LevelGrid& g, bool last_i, bool last_j, bool last_k) {
  Weights a;
  if (last_i) a.w = g.near[0], a.e = g.far[0];
  if (last_j) a.s = g.near[1], a.n = g.far[1];
  if (last_k) a.l = g.near[2], a.h = g.far[2];
  a.center = (a.w + a.e) + (a.s + a.n) + (a.l + a.h);
  return a;
}

/// The regular stencil. It takes the place of Weights, and gives the same bits as weights of 1.
struct UnitWeights {
  static constexpr double center = 6;
};

template <class D>
inline D neighbor_sum(const HalfRow& c, int m, UnitWeights) {
  return ((widen<D>(c.west + m) + widen<D>(c.west + m + 1)) +
          (widen<D>(c.south + m) + widen<D>(c.north + m))) +
         (widen<D>(c.low + m) + widen<D>(c.high + m));
}

template <class D>
inline D neighbor_sum(const HalfRow& c, int m, const Weights& a) {
  return ((a.w * widen<D>(c.west + m) + a.e * widen<D>(c.west + m + 1)) +
          (a.s * widen<D>(c.south + m) + a.n * widen<D>(c.north + m))) +
         (a.l * widen<D>(c.low + m) + a.h * widen<D>(c.high + m));
}

/// Calls body(row, weights) for the cells of a half row, which have the same weights, and then for
/// its last cell if it has other weights.
template <class Body>
inline void for_half_row(const LevelGrid& g, int j, int k, int parity, Body body) {
  const bool last_j = j == g.ny - 2 && g.near[1] != 1, last_k = k == g.nz - 2 && g.near[2] != 1;
  const bool last_i = g.near[0] != 1 && g.nx % 2 == parity;
  HalfRow row = half_row(g, j, k, parity);
  row.count -= last_i;
  if (last_j || last_k)
    body(row, weights(g, false, last_j, last_k));
  else
    body(row, UnitWeights());
  if (last_i) {
    const int m = row.count;
    body(HalfRow{row.x + m, row.b + m, row.west + m, row.south + m, row.north + m, row.low + m,
                 row.high + m, 1},
         weights(g, true, last_j, last_k));
  }
}

/// Sets the ghosts of closed faces beside the cells of one color in a plane to their inner
/// neighbors. Those of open faces are 0 from the start of a solve. A sweep must see the ghosts as
/// they are at its start. A cell changes once in a sweep and only it reads the ghost beside it, so
/// the ghosts can be set just before the color changes.
inline void set_ghosts(const LevelGrid& g, int k, int color) {
  const int odd = g.odd();
  const auto parity = [&](int j) { return (color + j + k) & 1; };
  if (g.closed[0] || g.closed[1])
    for (int j = 1; j < g.ny - 1; ++j) {
      float* row = g.x + g.row(j, k);
      float *half = row + (parity(j) ? odd : 0), *other = row + (parity(j) ? 0 : odd);
      if (g.closed[0] && parity(j) == 1) other[0] = half[0];
      if (g.closed[1] && parity(j) == g.nx % 2) other[(g.nx - 1) / 2] = half[(g.nx - 2) / 2];
    }
  const auto copy = [&](int j, std::ptrdiff_t to_ghost) {
    float* half = g.x + g.row(j, k) + (parity(j) ? odd : 0);
    const auto count = static_cast<std::size_t>(parity(j) ? g.nx - odd : odd);
    std::memcpy(half + to_ghost, half, count * sizeof(float));
  };
  if (g.closed[2]) copy(1, -g.nx);
  if (g.closed[3]) copy(g.ny - 2, g.nx);
  const bool low = g.closed[4] && k == 1, high = g.closed[5] && k == g.nz - 2;
  for (int j = 1; (low || high) && j < g.ny - 1; ++j) {
    if (low) copy(j, -g.plane());
    if (high) copy(j, g.plane());
  }
}

}  // namespace nbx::NBX_ISA
