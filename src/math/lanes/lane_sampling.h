// Samples a field at a different point for each lane: sample_linear of math/interpolation.h and the
// parts of sample_cubic, with the same operations in the same order and so with the same bits.
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
  x = clamp(x, f.nx - 1);
  y = clamp(y, f.ny - 1);
  z = clamp(z, f.nz - 1);
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

inline F linear(const Corners& c, F tx, F ty, F tz) {
  const auto lerp = [](F a, F b, F t) { return a + (b - a) * t; };
  const F v00 = lerp(c.row00.a, c.row00.b, tx), v10 = lerp(c.row10.a, c.row10.b, tx);
  const F v01 = lerp(c.row01.a, c.row01.b, tx), v11 = lerp(c.row11.a, c.row11.b, tx);
  return lerp(lerp(v00, v10, ty), lerp(v01, v11, ty), tz);
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
  return linear(corners(f, cell.at), cell.tx, cell.ty, cell.tz);
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

}  // namespace nbx::NBX_ISA
