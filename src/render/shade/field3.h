// A dense grid of three floats per cell: light. Laid out as Field is, x fastest, with the three
// values of a cell side by side.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "math/vector.h"

namespace nbx {

using Color = std::array<float, 3>;

struct Field3 {
  Vec3i dims{0, 0, 0};
  std::vector<float> data;  // 3 * nx * ny * nz

  Field3() = default;
  /// Throws std::bad_alloc where there is no memory for it.
  Field3(const Vec3i& size, float value) : dims(size), data(count() * 3, value) {}

  std::size_t count() const {
    return static_cast<std::size_t>(dims[0]) * static_cast<std::size_t>(dims[1]) *
           static_cast<std::size_t>(dims[2]);
  }
  /// The number of a cell, not of a float.
  std::size_t index(int i, int j, int k) const {
    return static_cast<std::size_t>(i) +
           static_cast<std::size_t>(dims[0]) *
               (static_cast<std::size_t>(j) +
                static_cast<std::size_t>(dims[1]) * static_cast<std::size_t>(k));
  }
  float* cell(std::size_t index) { return data.data() + 3 * index; }
  const float* cell(std::size_t index) const { return data.data() + 3 * index; }
};

}  // namespace nbx
