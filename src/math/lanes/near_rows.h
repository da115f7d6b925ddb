// Reads the rows of a field around lanes that lie close together, as the cells of a run do that a
// smooth flow has moved. The readers give the same values; they differ in what they need:
//
//   GatheredRows     nothing: each lane has an address of its own
//   AdjacentRows     lane l lies l cells after lane 0, in the same row: plain loads
//   WindowRows       the lanes lie in a few neighboring rows, and along x within two vectors: one
//                    permutation for each value, and lanes share the loads of a row
//
// Of the rows of 16 lanes in plumes of smoke and fire, half lie in one row, 95 % in at most 2 x 3
// rows, and all within 18 cells of x. For kernel files only (util/isa.h).
#pragma once

#include "math/lanes/lane_sampling.h"

namespace nbx::NBX_ISA {

/// The cell of each lane.
struct LaneCells {
  I i, j, k;
};

struct GatheredRows {
  const float* data;
  Indices at;

  /// The values at the lanes' cells plus `offset` elements, and those after them.
  Pair pair(std::ptrdiff_t offset) const { return gather_pairs(data + offset, at); }
  Quad quad(std::ptrdiff_t offset) const { return gather_quads(data + offset, at); }
};

struct AdjacentRows {
  const float* first;  // the cell of lane 0

  Pair pair(std::ptrdiff_t offset) const {
    const float* p = first + offset;
    return {load(p, Full()), load(p + 1, Full())};
  }
  Quad quad(std::ptrdiff_t offset) const {
    const float* p = first + offset;
    return {load(p, Full()), load(p + 1, Full()), load(p + 2, Full()), load(p + 3, Full())};
  }
};

#if defined(__AVX512F__)
struct WindowRows {
  const float* first;  // of the window
  I at;                // the lanes' cells, from there on

  Pair pair(std::ptrdiff_t offset) const {
    const F lo = load(first + offset, Full()), hi = load(first + offset + W, Full());
    return {take(lo, hi, 0), take(lo, hi, 1)};
  }
  Quad quad(std::ptrdiff_t offset) const {
    const F lo = load(first + offset, Full()), hi = load(first + offset + W, Full());
    return {take(lo, hi, 0), take(lo, hi, 1), take(lo, hi, 2), take(lo, hi, 3)};
  }

 private:
  F take(F lo, F hi, int n) const {
    return _mm512_permutex2var_ps(lo, reinterpret_cast<__m512i>(at + n), hi);
  }
};
#endif

/// All lanes lie in one row.
struct OneRow {
  static constexpr int kMost = 1, nj = 1, nk = 1;
  template <class V>
  V along_j(const V* rows) const {
    return rows[0];
  }
  template <class V>
  V along_k(const V* rows) const {
    return rows[0];
  }
};

/// The lanes lie in nj x nk rows, each lane in the row (dj, dk) of them.
struct SomeRows {
  static constexpr int kMost = 3;
  I dj, dk;
  int nj, nk;

  /// For each lane the value of its own row.
  F along_j(const F* rows) const { return own(rows, dj, nj); }
  F along_k(const F* rows) const { return own(rows, dk, nk); }

 private:
  static F own(const F* rows, I delta, int n) {
    F value = rows[0];
    for (int d = 1; d < n; ++d) value = select(delta == d, rows[d], value);
    return value;
  }
};

/// Where the lanes' cells lie: the first row, how they spread from there, and where a window of two
/// vectors along x begins.
struct NearPlace {
  explicit NearPlace(const LaneCells& c) : x(c.i[0] - kBehind), low_j(c.j[0]), low_k(c.k[0]) {
    one_row = !any((c.j != low_j) | (c.k != low_k));
    spread = {c.j - low_j, c.k - low_k, 1, 1};
    if (!one_row) {
      low_j = lowest(c.j);
      low_k = lowest(c.k);
      spread = {c.j - low_j, c.k - low_k, highest(c.j) - low_j + 1, highest(c.k) - low_k + 1};
    }
    const I at = c.i - x;
    close = !any((at < 0) | (at > 2 * kWindow - 4)) && spread.nj <= SomeRows::kMost &&
            spread.nk <= SomeRows::kMost;
  }

  static constexpr int kWindow = 16;
  static constexpr int kBehind = 6;  // lanes may fall behind lane 0 by as much
  int x, low_j, low_k;
  SomeRows spread;
  bool one_row;
  bool close;  // in few rows, and in the window with the 3 cells after them
};

inline GatheredRows gathered(const KernelField& f, const LaneCells& c) {
  return {f.data, Indices(c.i + f.nx * (c.j + f.ny * c.k))};
}

/// Returns read(rows, spread) with a reader that serves the cells from `from` to `to` around each
/// lane's cell, on each axis. All of them must lie in the field.
template <int from, int to, class Read>
auto read_near(const KernelField& f, const LaneCells& c, const NearPlace& place, const Read& read) {
  const std::ptrdiff_t nx = f.nx, nxy = plane_of(f);
#if defined(__AVX512F__)
  const std::ptrdiff_t first = place.x + place.low_j * nx + place.low_k * nxy;
  const std::ptrdiff_t begin = first + from * (1 + nx + nxy);
  const std::ptrdiff_t end =
      first + from + 2 * W + (to + place.spread.nj - 1) * nx + (to + place.spread.nk - 1) * nxy;
  if (place.close && begin >= 0 && end <= nxy * f.nz) {
    const WindowRows rows{f.data + first, c.i - place.x};
    return place.one_row ? read(rows, OneRow()) : read(rows, place.spread);
  }
#else
  if (place.one_row && !any(c.i - c.i[0] != int_iota()))
    return read(AdjacentRows{f.data + c.i[0] + c.j[0] * nx + c.k[0] * nxy}, OneRow());
#endif
  return read(gathered(f, c), OneRow());
}

}  // namespace nbx::NBX_ISA
