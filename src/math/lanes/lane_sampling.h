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

/// A row of lanes as a V: F itself, or a type that holds one.
template <class V>
V as(F f) {
  if constexpr (std::is_same_v<V, F>)
    return f;
  else
    return V{f};
}

/// V is F, or Careful (tiny_product.h) where corners may be tiny; so below.
template <class V = F>
V linear(const Corners& c, F tx, F ty, F tz) {
  const auto lerp = [](V a, V b, F t) { return a + t * (b - a); };
  const auto along_x = [&](const Pair& row) { return lerp(as<V>(row.a), as<V>(row.b), tx); };
  const V v00 = along_x(c.row00), v10 = along_x(c.row10);
  const V v01 = along_x(c.row01), v11 = along_x(c.row11);
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

template <class V>
V combine(const Quad& w, V a, V b, V c, V d) {
  return ((w.a * a + w.b * b) + w.c * c) + w.d * d;
}
inline F combine(const Quad& w, const Quad& v) { return combine(w, v.a, v.b, v.c, v.d); }

template <class V>
V hermite(V a, V b, V c, V d, F t) {
  const V m0 = 0.5f * (c - a);
  const V m1 = 0.5f * (d - b);
  const V rise = c - b;
  return t * (t * (t * (m0 + m1 - 2.0f * rise) + 3.0f * rise - 2.0f * m0 - m1) + m0) + b;
}

}  // namespace nbx::NBX_ISA
