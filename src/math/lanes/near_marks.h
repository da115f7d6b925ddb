// What the samples around a place can hold, for kernels that skip the empty parts of a field.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nbx {

/// What a part of a field holds besides +0.
enum Marks : std::uint8_t {
  kNothing = 0,
  kValues = 1,
  /// Values so small that products with weights may be subnormal: many processors take a hundred
  /// times as long for these.
  kTinyValues = 2,
  /// Treated as ordinary values.
  kUnknown = kValues,
};

/// Magnitudes below this are tiny.
inline constexpr float kTinyBelow = 0x1p-112f;

/// The marks of a field, summed up over what a row of lanes may read around kRows x kRows rows of
/// cells. The mark at (s, j, k) covers the x from 16 s to 16 s + 47 and the rows from (j - 1, k -
/// 1) to (j + 4, k + 4).
struct NearMarks {
  static constexpr int kSegment = 16, kSegments = 3, kRows = 3, kBack = 1, kAhead = kRows + 1;

  std::uint8_t at(int x, int j, int k) const {
    const std::size_t row = j + static_cast<std::size_t>(ny) * k;
    return data[std::max(x, 0) / kSegment + nx * row];
  }

  const std::uint8_t* data;  // null: nothing is known
  int nx, ny;                // segments in a row, rows in a plane
};

}  // namespace nbx
