// Which parts of a field hold anything, so that operators can skip the rest: most of a box is clear
// air, and a channel may be empty.
#pragma once

#include <cstdint>
#include <vector>

#include "math/field.h"
#include "math/lanes/near_marks.h"

namespace nbx {

/// Whether nearly all of the field holds ordinary values, by a look at one row in 64: marks would
/// then only cost time.
bool seems_full(const Field<float>& f);

/// Marks by segments of 16 cells of a row; the last one of a row may be shorter. -0 and NaN count
/// as values: what isn't marked is +0, bit by bit.
class GasMarks {
 public:
  explicit GasMarks(const Field<float>& f);

  /// The marks summed up over what samples near a place can read. No data if nearly all of the
  /// field holds ordinary values: looking at marks would only cost time.
  NearMarks near() const {
    if (near_.empty()) return {};
    return {near_.data(), segments_, ny_};
  }

 private:
  std::size_t index(int segment, int j, int k) const {
    return segment + std::size_t{1} * segments_ * (j + std::size_t{1} * ny_ * k);
  }
  void sum_up(int nz);

  int segments_, ny_;
  std::vector<std::uint8_t> near_;
};

}  // namespace nbx
