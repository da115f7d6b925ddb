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
// the sum of the six weights. Sums run in double, in the order in which `terms` has them.
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

/// Weights of the neighbors of a cell, and their sum. They are 1, with two exceptions. The last
/// cell of an axis whose last interval has another width has other weights. The ghost at a closed
/// face has weight 0: as a copy of the cell it adds nothing to A x, and as a neighbor whose value
/// is that of the last sweep it would hold the cell back.
struct Weights {
  double w = 1, e = 1, s = 1, n = 1, l = 1, h = 1;
  double center() const { return (w + e) + (s + n) + (l + h); }
};

/// The regular stencil. It takes the place of Weights, and gives the same bits as weights of 1.
struct UnitWeights {};

/// Weights that vary from cell to cell: those of the open faces around each, times `scale`. The
/// pointers follow those of the HalfRow.
struct FaceWeights {
  const float *w, *e, *s, *n, *l, *h;
  Weights scale;
};

/// The sum of the weighted neighbors of a cell, and the sum of the weights.
template <class D>
struct Terms {
  D neighbors, center;
};

template <class D>
inline Terms<D> terms(const HalfRow& c, int m, UnitWeights) {
  return {((widen<D>(c.west + m) + widen<D>(c.west + m + 1)) +
           (widen<D>(c.south + m) + widen<D>(c.north + m))) +
              (widen<D>(c.low + m) + widen<D>(c.high + m)),
          D{} + 6.0};
}

template <class D>
inline Terms<D> terms(const HalfRow& c, int m, const Weights& a) {
  return {((a.w * widen<D>(c.west + m) + a.e * widen<D>(c.west + m + 1)) +
           (a.s * widen<D>(c.south + m) + a.n * widen<D>(c.north + m))) +
              (a.l * widen<D>(c.low + m) + a.h * widen<D>(c.high + m)),
          D{} + a.center()};
}

template <class D>
inline Terms<D> terms(const HalfRow& c, int m, const FaceWeights& a) {
  const D w = a.scale.w * widen<D>(a.w + m), e = a.scale.e * widen<D>(a.e + m);
  const D s = a.scale.s * widen<D>(a.s + m), n = a.scale.n * widen<D>(a.n + m);
  const D l = a.scale.l * widen<D>(a.l + m), h = a.scale.h * widen<D>(a.h + m);
  return {((w * widen<D>(c.west + m) + e * widen<D>(c.west + m + 1)) +
           (s * widen<D>(c.south + m) + n * widen<D>(c.north + m))) +
              (l * widen<D>(c.low + m) + h * widen<D>(c.high + m)),
          (w + e) + (s + n) + (l + h)};
}

/// 1 / center; 0 for a cell without neighbors, which stays 0.
inline double inverse(double center) { return center > 0 ? 1 / center : 0; }
inline Doubles inverse(Doubles center) {
  const Doubles one = Doubles{} + 1.0;
  return center > 0 ? one / center : Doubles{};
}

/// The weights of the two neighbors along `axis`, at index `at` of n cells.
inline void axis_weights(double& low, double& high, const LevelGrid& g, int axis, int at, int n) {
  if (at == n - 2) low = g.near[axis], high = g.far[axis];
  if (g.stale_ghosts) return;
  if (at == 1 && g.closed[2 * axis]) low = 0;
  if (at == n - 2 && g.closed[2 * axis + 1]) high = 0;
}

inline HalfRow from(const HalfRow& row, int m, int count) {
  return {row.x + m,     row.b + m,   row.west + m, row.south + m,
          row.north + m, row.low + m, row.high + m, count};
}

inline FaceWeights face_weights(const LevelGrid& g, const HalfRow& row, const Weights& scale) {
  const std::ptrdiff_t c = row.x - g.x;
  const float* west = g.open[0] + c;
  const float* east = g.open[0] + (row.west - g.x) + 1;
  return {west, east, g.open[1] + c, g.open[1] + c + g.nx, g.open[2] + c, g.open[2] + c + g.plane(),
          scale};
}

/// Calls body(cells, weights) for the cells of a half row, in up to three parts: the first and the
/// last cell of the row may have weights of their own.
template <class Body>
inline void for_half_row(const LevelGrid& g, int j, int k, int parity, Body body) {
  const HalfRow row = half_row(g, j, k, parity);
  Weights inner;
  axis_weights(inner.s, inner.n, g, 1, j, g.ny);
  axis_weights(inner.l, inner.h, g, 2, k, g.nz);
  const bool near_solid = g.near_solid && g.near_solid[std::ptrdiff_t{k} * g.ny + j];
  const auto part = [&](int m, int count, const Weights& a) {
    const HalfRow cells = from(row, m, count);
    if (near_solid)
      body(cells, face_weights(g, cells, a));
    else if (a.s == 1 && a.n == 1 && a.l == 1 && a.h == 1 && a.w == 1 && a.e == 1)
      body(cells, UnitWeights());
    else
      body(cells, a);
  };
  Weights first = inner, last = inner;
  axis_weights(first.w, first.e, g, 0, 1, g.nx);
  axis_weights(last.w, last.e, g, 0, g.nx - 2, g.nx);
  const bool own_first = parity == 1 && (first.w != 1 || first.e != 1);
  const bool own_last = parity == g.nx % 2 && (last.w != 1 || last.e != 1) && row.count > own_first;
  if (own_first) part(0, 1, first);
  part(own_first, row.count - own_first - own_last, inner);
  if (own_last) part(row.count - 1, 1, last);
}

/// Where sweeps read the ghosts of closed faces: sets those beside the cells of one color in a
/// plane to their inner neighbors. Those of open faces are 0 from the start of a solve. A sweep
/// must see the ghosts as they are at its start. A cell changes once in a sweep and only it reads
/// the ghost beside it, so the ghosts can be set just before the color changes.
inline void set_ghosts(const LevelGrid& g, int k, int color) {
  if (!g.stale_ghosts) return;
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
