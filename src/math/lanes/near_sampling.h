// sample_linear and sample_cubic of lane_sampling.h for lanes that lie close together
// (near_rows.h): the same bits, at a fraction of the time. Lanes that don't are handled too.
#pragma once

#include "math/lanes/near_marks.h"
#include "math/lanes/near_rows.h"
#include "math/lanes/tiny_product.h"

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

/// What the samples of the lanes can read; `place` must have found its rows.
inline std::uint8_t marks_at(const NearMarks& marks, const NearPlace& place) {
  const bool covered = place.narrow && place.nj <= NearMarks::kRows && place.nk <= NearMarks::kRows;
  if (!covered) return kUnknown;
  return marks.at(place.x - 1, place.j, place.k);
}

inline Corners near_corners(const KernelField& f, const LaneCells& cells, const NearPlace& place) {
  return read_near<0, 1>(f, cells, place, [&](const auto& rows, const auto&) {
    const std::ptrdiff_t nx = f.nx, nxy = plane_of(f);
    return Corners{rows.pair(0), rows.pair(nx), rows.pair(nxy), rows.pair(nxy + nx)};
  });
}

inline F near_linear(const KernelField& f, const NearCell& c, const NearMarks& marks) {
  NearPlace place(c.at);
  std::uint8_t held = kUnknown;
  if (marks.data) {
    place.find_rows(c.at);
    held = marks_at(marks, place);
    if (held == kNothing) return F{};
  }
  const Corners corners = near_corners(f, c.at, place);
  if (held & kTinyValues) return plain(linear<Careful>(corners, c.tx, c.ty, c.tz));
  return linear(corners, c.tx, c.ty, c.tz);
}

/// One sample of sample_cubic from rows around the cells.
template <class V, class Rows, class Spread>
F cubic_of(const KernelField& f, const NearCell& c, const Rows& rows, const Spread& spread) {
  constexpr int nj = Spread::nj, nk = Spread::nk;
  const Quad wx = catmull_rom(c.tx), wy = catmull_rom(c.ty);
  V plane[nk + 3];
  Pair own[nk + 3][2];  // the values next to each lane in rows j and j + 1
  for (int k = 0; k < nk + 3; ++k) {
    F a[nj + 3], b[nj + 3];
    V row[nj + 3];
    for (int j = 0; j < nj + 3; ++j) {
      const Quad v = rows.quad((k - 1) * plane_of(f) + (j - 1) * f.nx - 1);
      row[j] = combine(wx, as<V>(v.a), as<V>(v.b), as<V>(v.c), as<V>(v.d));
      a[j] = v.b;
      b[j] = v.c;
    }
    plane[k] = combine(wy, spread.along_j(row), spread.along_j(row + 1), spread.along_j(row + 2),
                       spread.along_j(row + 3));
    for (int n = 0; n < 2; ++n) own[k][n] = {spread.along_j(a + 1 + n), spread.along_j(b + 1 + n)};
  }
  const V cubic = hermite<V>(spread.along_k(plane), spread.along_k(plane + 1),
                             spread.along_k(plane + 2), spread.along_k(plane + 3), c.tz);
  const F value = plain(cubic);
  const auto corner = [&](int j, int k) {
    const F a[2] = {own[k][j].a, own[k + nk - 1][j].a}, b[2] = {own[k][j].b, own[k + nk - 1][j].b};
    return Pair{spread.along_k(a), spread.along_k(b)};
  };
  const Corners corners{corner(0, 1), corner(1, 1), corner(0, 2), corner(1, 2)};
  const I good = in_range(corners, value);
  return any(~good) ? select(good, value, plain(linear<V>(corners, c.tx, c.ty, c.tz))) : value;
}

/// Catmull-Rom with the limiter of sample_cubic. The cells must lie in [1, n-3].
inline F near_cubic(const KernelField& f, const NearCell& c, const NearMarks& marks) {
  NearPlace place(c.at);
  if (W > 8 || marks.data) place.find_rows(c.at);
  if (marks.data) {
    const std::uint8_t held = marks_at(marks, place);
    if (held == kNothing) return F{};
    if (held & kTinyValues)
      return read_near<-1, 2>(f, c.at, place, [&](const auto& rows, const auto& spread) {
        return cubic_of<Careful>(f, c, rows, spread);
      });
  }
  return read_near<-1, 2>(f, c.at, place, [&](const auto& rows, const auto& spread) {
    return cubic_of<F>(f, c, rows, spread);
  });
}

/// Lanes that `marks` shows to read nothing but +0 get +0.
inline F sample_near_linear(const KernelField& f, const NearMarks& marks, F x, F y, F z) {
  return near_linear(f, near_linear_cell(f, x, y, z), marks);
}

/// Needs 4 cells on each axis.
inline F sample_near_cubic(const KernelField& f, const NearMarks& marks, F x, F y, F z) {
  const auto fits = [](F a, int n) { return (a >= 1.0f) & (a < static_cast<float>(n - 2)); };
  const I inner = fits(x, f.nx) & fits(y, f.ny) & fits(z, f.nz);
  const NearCell cell = near_linear_cell(f, x, y, z);
  if (!any(~inner)) return near_cubic(f, cell, marks);
  const F linear = near_linear(f, cell, marks);
  if (!any(inner)) return linear;
  // Lanes outside go along in the nearest cell that has all its neighbors.
  const auto inward = [](I a, int n) { return min(max(a, splat(1)), splat(n - 3)); };
  const LaneCells& at = cell.at;
  const LaneCells moved{inward(at.i, f.nx), inward(at.j, f.ny), inward(at.k, f.nz)};
  return select(inner, near_cubic(f, {moved, cell.tx, cell.ty, cell.tz}, marks), linear);
}

}  // namespace nbx::NBX_ISA
