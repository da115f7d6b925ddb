// Reads the rows of a field around lanes that lie close together, as the cells of a run do that a
// smooth flow has moved. The readers give the same values; they differ in what they need:
//
//   GatheredRows     nothing: each lane has an address of its own
//   AdjacentRows     lane l lies l cells after lane 0, in the same row: plain loads
//   WindowRows       the lanes lie in a few neighboring rows, and along x within two vectors: one
//                    permutation for each value, and lanes share the loads of a row
//
// Of 16 lanes in plumes of smoke and fire, half lie in one row, nine tenths in at most 2 x 2 rows,
// and all within 18 cells of x. For kernel files only (util/isa.h).
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

/// The lanes lie in nj x nk rows, nj and nk 1 or 2: lane by lane in row (j, k), j + 1 where
/// `next_j`, k + 1 where `next_k`.
template <int nj_, int nk_>
struct FewRows {
  static constexpr int nj = nj_, nk = nk_;
  I next_j, next_k;

  /// For each lane the value of its own row.
  template <class V>
  V along_j(const V* rows) const {
    if constexpr (nj == 1)
      return rows[0];
    else
      return select(next_j, rows[1], rows[0]);
  }
  template <class V>
  V along_k(const V* rows) const {
    if constexpr (nk == 1)
      return rows[0];
    else
      return select(next_k, rows[1], rows[0]);
  }
};
using OneRow = FewRows<1, 1>;

/// Where the lanes' cells lie.
struct NearPlace {
  explicit NearPlace(const LaneCells& c) : x(c.i[0] - kBehind), j(c.j[0]), k(c.k[0]) {
    one_row = !any((c.j != j) | (c.k != k));
    const I at = c.i - x;
    narrow = !any((at < 0) | (at > 2 * kWindow - 4));
  }

  /// Finds the first row and the number of rows on each axis.
  void find_rows(const LaneCells& c) {
    if (one_row) return;
    j = lowest(c.j);
    k = lowest(c.k);
    nj = highest(c.j) - j + 1;
    nk = highest(c.k) - k + 1;
  }

  static constexpr int kWindow = 16;
  static constexpr int kBehind = 6;  // lanes may fall behind lane 0 by as much
  int x;                             // where the window begins
  int j, k;                          // the row of lane 0, or the first one
  int nj = 1, nk = 1;
  bool one_row;
  bool narrow;  // all lanes and the 3 cells after each lie in the window
};

inline GatheredRows gathered(const KernelField& f, const LaneCells& c) {
  return {f.data, Indices(c.i + f.nx * (c.j + f.ny * c.k))};
}

/// Returns read(rows, spread) with a reader that serves the cells from `from` to `to` around each
/// lane's cell, on each axis. All of them must lie in the field. Several rows are shared only if
/// `place` has found them.
template <int from, int to, class Read>
auto read_near(const KernelField& f, const LaneCells& c, const NearPlace& place, const Read& read) {
  const std::ptrdiff_t nx = f.nx, nxy = plane_of(f);
#if defined(__AVX512F__)
  const std::ptrdiff_t first = place.x + place.j * nx + place.k * nxy;
  const std::ptrdiff_t begin = first + from * (1 + nx + nxy);
  const std::ptrdiff_t end =
      first + from + 2 * W + (to + place.nj - 1) * nx + (to + place.nk - 1) * nxy;
  if (place.narrow && begin >= 0 && end <= nxy * f.nz) {
    const WindowRows rows{f.data + first, c.i - place.x};
    if (place.one_row) return read(rows, OneRow());
    if constexpr (to - from > 1) {
      const I next_j = c.j != place.j, next_k = c.k != place.k;
      if (place.nj == 2 && place.nk == 1) return read(rows, FewRows<2, 1>{next_j, next_k});
      if (place.nj == 1 && place.nk == 2) return read(rows, FewRows<1, 2>{next_j, next_k});
      if (place.nj == 2 && place.nk == 2) return read(rows, FewRows<2, 2>{next_j, next_k});
    }
  }
#else
  if (place.one_row && !any(c.i - c.i[0] != int_iota()))
    return read(AdjacentRows{f.data + c.i[0] + c.j[0] * nx + c.k[0] * nxy}, OneRow());
#endif
  return read(gathered(f, c), OneRow());
}

}  // namespace nbx::NBX_ISA
