// Samples a field at a different point for each lane: sample_linear and sample_cubic of
// math/interpolation.h, with the same operations in the same order and so with the same bits.
#pragma once

#include "math/lanes/kernel_field.h"
#include "math/lanes/lane_gather.h"

namespace nbx::NBX_ISA {

/// Elements from one plane of a field to the next.
inline std::ptrdiff_t plane_of(const KernelField& f) {
  return static_cast<std::ptrdiff_t>(f.nx) * f.ny;
}

/// The cell of each lane's point: its low corner, and the fractions inside it.
struct Cell {
  Indices at;
  F tx, ty, tz;
};

inline Cell cell_of(const KernelField& f, I i, I j, I k, F x, F y, F z) {
  return {Indices(i + f.nx * (j + f.ny * k)), x - to_float(i), y - to_float(j), z - to_float(k)};
}

/// x, y, z must lie in [0, n-1).
inline Cell inner_cell(const KernelField& f, F x, F y, F z) {
  return cell_of(f, truncate(x), truncate(y), truncate(z), x, y, z);
}

/// Clamps to [0, n-1], NaN to 0. The index n-1 becomes n-2.
inline Cell linear_cell(const KernelField& f, F x, F y, F z) {
  const auto clamp = [](F a, int n) {
    return min(max(a, splat(0.0f)), splat(static_cast<float>(n - 1)));
  };
  x = clamp(x, f.nx);
  y = clamp(y, f.ny);
  z = clamp(z, f.nz);
  return cell_of(f, min(truncate(x), splat(f.nx - 2)), min(truncate(y), splat(f.ny - 2)),
                 min(truncate(z), splat(f.nz - 2)), x, y, z);
}

/// The values at the 8 corners of a cell, as rows along x.
struct Corners {
  Pair row00, row10, row01, row11;  // at (j, k), (j+1, k), (j, k+1), (j+1, k+1)
};

inline Corners corners(const KernelField& f, const Indices& at) {
  const float* up = f.data + plane_of(f);
  return {gather_pairs(f.data, at), gather_pairs(f.data + f.nx, at), gather_pairs(up, at),
          gather_pairs(up + f.nx, at)};
}

inline F linear(const Corners& c, const Cell& cell) {
  const auto lerp = [](F a, F b, F t) { return a + (b - a) * t; };
  const F v00 = lerp(c.row00.a, c.row00.b, cell.tx), v10 = lerp(c.row10.a, c.row10.b, cell.tx);
  const F v01 = lerp(c.row01.a, c.row01.b, cell.tx), v11 = lerp(c.row11.a, c.row11.b, cell.tx);
  return lerp(lerp(v00, v10, cell.ty), lerp(v01, v11, cell.ty), cell.tz);
}

/// The lanes whose value is within the range of the corner values.
inline I in_range(const Corners& c, F value) {
  const Pair* const rows[4] = {&c.row00, &c.row10, &c.row01, &c.row11};
  F lo = c.row00.a, hi = c.row00.a;
  for (const Pair* row : rows) {
    lo = min(row->b, min(row->a, lo));
    hi = max(row->b, max(row->a, hi));
  }
  return (value >= lo) & (value <= hi);
}

inline F sample_linear(const KernelField& f, F x, F y, F z) {
  const Cell cell = linear_cell(f, x, y, z);
  return linear(corners(f, cell.at), cell);
}

/// Catmull-Rom weights of four samples.
inline Quad catmull_rom(F t) {
  const F t2 = t * t;
  return {(1.0f - 0.5f * t) * t2 - 0.5f * t, (1.5f * t - 2.5f) * t2 + 1.0f,
          (2.0f - 1.5f * t) * t2 + 0.5f * t, (0.5f * t - 0.5f) * t2};
}

inline F combine(const Quad& w, const Quad& v) {
  return ((w.a * v.a + w.b * v.b) + w.c * v.c) + w.d * v.d;
}

inline F hermite(const Quad& q, F t) {
  const F m0 = (q.c - q.a) * 0.5f;
  const F m1 = (q.d - q.b) * 0.5f;
  const F d = q.c - q.b;
  return (((m0 + m1 - 2.0f * d) * t + 3.0f * d - 2.0f * m0 - m1) * t + m0) * t + q.b;
}

/// Needs 4 cells on each axis.
inline F sample_cubic(const KernelField& f, F x, F y, F z) {
  const auto fits = [](F a, int n) { return (a >= 1.0f) & (a < static_cast<float>(n - 2)); };
  const I inner = fits(x, f.nx) & fits(y, f.ny) & fits(z, f.nz);
  const F one = splat(1.0f);
  const Cell cell =
      inner_cell(f, select(inner, x, one), select(inner, y, one), select(inner, z, one));
  const Quad wx = catmull_rom(cell.tx), wy = catmull_rom(cell.ty);
  F plane[4];
  Pair middle[4];  // the cell's own corners
  for (int k = 0; k < 4; ++k) {
    F row[4];
    for (int j = 0; j < 4; ++j) {
      const Quad v = gather_quads(f.data + (k - 1) * plane_of(f) + (j - 1) * f.nx - 1, cell.at);
      row[j] = combine(wx, v);
      if ((j == 1 || j == 2) && (k == 1 || k == 2)) middle[2 * (k - 1) + j - 1] = {v.b, v.c};
    }
    plane[k] = combine(wy, {row[0], row[1], row[2], row[3]});
  }
  const F cubic = hermite({plane[0], plane[1], plane[2], plane[3]}, cell.tz);
  const Corners c{middle[0], middle[1], middle[2], middle[3]};
  const F value = select(in_range(c, cubic), cubic, linear(c, cell));
  return any(~inner) ? select(inner, value, sample_linear(f, x, y, z)) : value;
}

}  // namespace nbx::NBX_ISA
