// A dense grid of light, three floats per cell. Cells lie in memory as in Field, x fastest, and the
// three values of a cell lie side by side.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "math/vector.h"

namespace nbx {

using Color = std::array<float, 3>;

struct Field3 {
  Vec3i dims{0, 0, 0};
  std::vector<float> data;  // 3 * nx * ny * nz

  Field3() = default;
  /// Throws std::bad_alloc if there isn't enough memory.
  Field3(const Vec3i& size, float value) : dims(size), data(count() * 3, value) {}

  /// Number of cells.
  static std::size_t count(const Vec3i& n) { return std::size_t(n[0]) * n[1] * n[2]; }
  /// Index of a cell, not of a float.
  static std::size_t index(const Vec3i& n, int i, int j, int k) {
    return i + std::size_t(n[0]) * (j + std::size_t(n[1]) * k);
  }
  std::size_t count() const { return count(dims); }
  std::size_t index(int i, int j, int k) const { return index(dims, i, j, k); }
  float* cell(std::size_t index) { return data.data() + 3 * index; }
  const float* cell(std::size_t index) const { return data.data() + 3 * index; }
};

}  // namespace nbx
