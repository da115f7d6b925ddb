// Filtered look-ups in grids of light. Points are in cells of the grid.
#pragma once

#include <algorithm>
#include <array>

#include "math/lanes/bspline.h"
#include "render/shade/field3.h"

namespace nbx {

/// The cells around a point: the lower corner, and the point's position between it and the next
/// one.
struct LightCell {
  int lower[3];
  float fraction[3];
};

/// Trilinear. `corner(i, j, k)` returns the Color of a cell; it is called for corners of weight 0
/// too. Black outside of [0, n - 1] and for NaN.
template <class Corner>
Color linear_light(const Vec3d& point, const Vec3i& dims, const Corner& corner) {
  LightCell cell;
  for (int axis = 0; axis < 3; ++axis) {
    if (!(point[axis] >= 0 && point[axis] <= dims[axis] - 1)) return {0, 0, 0};
    cell.lower[axis] = std::max(std::min(static_cast<int>(point[axis]), dims[axis] - 2), 0);
    cell.fraction[axis] = static_cast<float>(point[axis] - cell.lower[axis]);
  }
  Color sum{0, 0, 0};
  for (int n = 0; n < 8; ++n) {
    float weight = 1;
    int at[3];
    for (int axis = 0; axis < 3; ++axis) {
      const int high = n >> axis & 1;
      at[axis] = std::min(cell.lower[axis] + high, dims[axis] - 1);
      weight *= high ? cell.fraction[axis] : 1 - cell.fraction[axis];
    }
    const Color value = corner(at[0], at[1], at[2]);
    for (int c = 0; c < 3; ++c) sum[c] += weight * value[c];
  }
  return sum;
}

/// Cubic B-splines over 4 x 4 x 4 cells if the grid contains them, otherwise `fallback()`.
template <class Corner, class Fallback>
Color cubic_light(const Vec3d& point, const Vec3i& dims, const Corner& corner,
                  const Fallback& fallback) {
  std::array<float, 4> weights[3];
  int first[3];
  for (int axis = 0; axis < 3; ++axis) {
    if (!(point[axis] >= 1 && point[axis] < dims[axis] - 2)) return fallback();
    const int i = static_cast<int>(point[axis]);
    first[axis] = i - 1;
    weights[axis] = bspline_weights<std::array<float, 4>>(static_cast<float>(point[axis] - i));
  }
  Color sum{0, 0, 0};
  for (int k = 0; k < 4; ++k)
    for (int j = 0; j < 4; ++j) {
      const float row = weights[1][j] * weights[2][k];
      for (int i = 0; i < 4; ++i) {
        const Color value = corner(first[0] + i, first[1] + j, first[2] + k);
        for (int c = 0; c < 3; ++c) sum[c] += row * weights[0][i] * value[c];
      }
    }
  return sum;
}

}  // namespace nbx
