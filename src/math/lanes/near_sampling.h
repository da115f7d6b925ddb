// sample_linear and sample_cubic of lane_sampling.h for lanes that lie close together
// (near_rows.h): the same bits, at a fraction of the time. Lanes that don't are handled too.
#pragma once

#include "math/lanes/near_rows.h"

namespace nbx::NBX_ISA {

/// A lane's cell and the fractions inside it.
struct NearCell {
  LaneCells at;
  F tx, ty, tz;
};

inline NearCell near_cell(I i, I j, I k, F x, F y, F z) {
  return {{i, j, k}, x - to_float(i), y - to_float(j), z - to_float(k)};
}

/// x, y, z must lie in [0, n-1).
inline NearCell near_inner_cell(F x, F y, F z) {
  return near_cell(truncate(x), truncate(y), truncate(z), x, y, z);
}

/// The index rule of linear_cell.
inline NearCell near_linear_cell(const KernelField& f, F x, F y, F z) {
  x = clamp(x, f.nx - 1);
  y = clamp(y, f.ny - 1);
  z = clamp(z, f.nz - 1);
  return near_cell(min(truncate(x), splat(f.nx - 2)), min(truncate(y), splat(f.ny - 2)),
                   min(truncate(z), splat(f.nz - 2)), x, y, z);
}

inline Corners near_corners(const KernelField& f, const LaneCells& cells) {
  return read_near<0, 1>(f, cells, [&](const auto& rows, const auto& spread) {
    constexpr int kMost = std::decay_t<decltype(spread)>::kMost;
    F own[2][2][kMost + 1];  // by place in x, by row of the cell, by k
    for (int k = 0; k <= spread.nk; ++k) {
      F a[kMost + 1], b[kMost + 1];
      for (int j = 0; j <= spread.nj; ++j) {
        const Pair v = rows.pair(k * plane_of(f) + j * f.nx);
        a[j] = v.a;
        b[j] = v.b;
      }
      for (int n = 0; n < 2; ++n) {
        own[0][n][k] = spread.along_j(a + n);
        own[1][n][k] = spread.along_j(b + n);
      }
    }
    const auto row = [&](int j, int k) {
      return Pair{spread.along_k(own[0][j] + k), spread.along_k(own[1][j] + k)};
    };
    return Corners{row(0, 0), row(1, 0), row(0, 1), row(1, 1)};
  });
}

inline F near_linear(const KernelField& f, const NearCell& c) {
  return linear(near_corners(f, c.at), c.tx, c.ty, c.tz);
}

/// Catmull-Rom with the limiter of sample_cubic. The cells must lie in [1, n-3].
inline F near_cubic(const KernelField& f, const NearCell& c) {
  const Quad wx = catmull_rom(c.tx), wy = catmull_rom(c.ty);
  return read_near<-1, 2>(f, c.at, [&](const auto& rows, const auto& spread) {
    constexpr int kMost = std::decay_t<decltype(spread)>::kMost;
    F plane[kMost + 3];
    F own[2][2][kMost + 3];  // the cell's own corners, as in near_corners
    for (int k = 0; k < spread.nk + 3; ++k) {
      F a[kMost + 3], b[kMost + 3], row[kMost + 3];
      for (int j = 0; j < spread.nj + 3; ++j) {
        const Quad v = rows.quad((k - 1) * plane_of(f) + (j - 1) * f.nx - 1);
        row[j] = combine(wx, v);
        a[j] = v.b;
        b[j] = v.c;
      }
      plane[k] = combine(wy, {spread.along_j(row), spread.along_j(row + 1), spread.along_j(row + 2),
                              spread.along_j(row + 3)});
      if (k == 0 || k == spread.nk + 2) continue;
      for (int n = 0; n < 2; ++n) {
        own[0][n][k] = spread.along_j(a + 1 + n);
        own[1][n][k] = spread.along_j(b + 1 + n);
      }
    }
    const F cubic = hermite({spread.along_k(plane), spread.along_k(plane + 1),
                             spread.along_k(plane + 2), spread.along_k(plane + 3)},
                            c.tz);
    const auto row = [&](int j, int k) {
      return Pair{spread.along_k(own[0][j] + k), spread.along_k(own[1][j] + k)};
    };
    const Corners corners{row(0, 1), row(1, 1), row(0, 2), row(1, 2)};
    const I good = in_range(corners, cubic);
    return any(~good) ? select(good, cubic, linear(corners, c.tx, c.ty, c.tz)) : cubic;
  });
}

inline F sample_near_linear(const KernelField& f, F x, F y, F z) {
  return near_linear(f, near_linear_cell(f, x, y, z));
}

/// Needs 4 cells on each axis.
inline F sample_near_cubic(const KernelField& f, F x, F y, F z) {
  const auto fits = [](F a, int n) { return (a >= 1.0f) & (a < static_cast<float>(n - 2)); };
  const I inner = fits(x, f.nx) & fits(y, f.ny) & fits(z, f.nz);
  const NearCell cell = near_linear_cell(f, x, y, z);
  if (!any(~inner)) return near_cubic(f, cell);
  const F linear = near_linear(f, cell);
  if (!any(inner)) return linear;
  // Lanes outside go along in the nearest cell that has all its neighbors.
  const auto inward = [](I a, int n) { return min(max(a, splat(1)), splat(n - 3)); };
  const LaneCells& at = cell.at;
  const LaneCells moved{inward(at.i, f.nx), inward(at.j, f.ny), inward(at.k, f.nz)};
  return select(inner, near_cubic(f, {moved, cell.tx, cell.ty, cell.tz}), linear);
}

}  // namespace nbx::NBX_ISA
