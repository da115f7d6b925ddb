// Samples a field at a point in its own grid coordinates.
#pragma once

#include <algorithm>

#include "math/field.h"

namespace nbx {

/// A cell for interpolation: its low corner and the fractions inside it.
struct CellCoordinates {
  int i, j, k;
  float tx, ty, tz;
};

/// The index rule of every trilinear sample: coordinates are clamped to [0, n-1] and the index is
/// the integer part, but at most n-2, so that a fraction reaches 1 at the far end. NaN counts as 0,
/// so no coordinate points outside of the field. Needs 2 cells on each axis.
inline CellCoordinates linear_cell(const Field<float>& f, float x, float y, float z) {
  // std::max gives its first argument when the other one is NaN.
  x = std::min(std::max(0.0f, x), static_cast<float>(f.nx() - 1));
  y = std::min(std::max(0.0f, y), static_cast<float>(f.ny() - 1));
  z = std::min(std::max(0.0f, z), static_cast<float>(f.nz() - 1));
  const int i = std::min(static_cast<int>(x), f.nx() - 2);
  const int j = std::min(static_cast<int>(y), f.ny() - 2);
  const int k = std::min(static_cast<int>(z), f.nz() - 2);
  return {i, j, k, x - static_cast<float>(i), y - static_cast<float>(j), z - static_cast<float>(k)};
}

/// Trilinear: along x, then y, then z, with a + (b - a) t.
inline float sample_linear(const Field<float>& f, float x, float y, float z) {
  const CellCoordinates c = linear_cell(f, x, y, z);
  const std::size_t nx = f.nx();
  const std::size_t nxy = nx * f.ny();
  const float* p = f.data() + f.index(c.i, c.j, c.k);
  const auto lerp = [](float a, float b, float t) { return a + (b - a) * t; };
  const float a00 = lerp(p[0], p[1], c.tx);
  const float a10 = lerp(p[nx], p[nx + 1], c.tx);
  const float a01 = lerp(p[nxy], p[nxy + 1], c.tx);
  const float a11 = lerp(p[nxy + nx], p[nxy + nx + 1], c.tx);
  return lerp(lerp(a00, a10, c.ty), lerp(a01, a11, c.ty), c.tz);
}

/// The smallest and the largest of the 8 corner values of a cell.
struct ValueRange {
  float lo, hi;
};
inline ValueRange corner_range(const Field<float>& f, const CellCoordinates& c) {
  ValueRange range{f(c.i, c.j, c.k), f(c.i, c.j, c.k)};
  for (int corner = 1; corner < 8; ++corner) {
    const float v = f(c.i + (corner & 1), c.j + (corner >> 1 & 1), c.k + (corner >> 2));
    range.lo = std::min(range.lo, v);
    range.hi = std::max(range.hi, v);
  }
  return range;
}

/// Catmull-Rom on 4 x 4 x 4 cells if they fit, else trilinear. A result outside of the range of the
/// cell's 8 corner values is replaced by the trilinear one, which limits overshoot.
float sample_cubic(const Field<float>& f, float x, float y, float z);

}  // namespace nbx
