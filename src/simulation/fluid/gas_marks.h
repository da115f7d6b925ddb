// Which parts of a field hold anything, so that operators can skip the rest: most of a box is clear
// air, and a channel may be empty.
#pragma once

#include <cstdint>
#include <vector>

#include "math/field.h"
#include "math/lanes/near_marks.h"
#include "simulation/fluid/block_set.h"

namespace nbx {

/// Whether nearly all of the field holds ordinary values, by a look at one row in 64: marks would
/// then only cost time.
bool seems_full(const Field<float>& f);

/// Marks by segments of 16 cells of a row; the last one of a row may be shorter. -0 and NaN count
/// as values: what isn't marked is +0, bit by bit.
class GasMarks {
 public:
  /// Looks into the blocks of `where` alone: the others hold nothing, whatever is in their memory.
  GasMarks(const Field<float>& f, const BlockSet& where);

  /// The marks summed up over what samples near a place can read. No data if nearly all of the
  /// field holds ordinary values: looking at marks would only cost time.
  NearMarks near() const {
    if (near_.empty()) return {};
    return {near_.data(), segments_, ny_};
  }
  /// The blocks with marks; all if nearly all of the field holds ordinary values.
  const BlockSet& blocks() const { return blocks_; }

 private:
  std::size_t index(int segment, int j, int k) const {
    return segment + std::size_t{1} * segments_ * (j + std::size_t{1} * ny_ * k);
  }
  void find_blocks(int nz);
  void sum_up(int nz);

  int segments_, ny_;
  BlockSet blocks_;
  std::vector<std::uint8_t> near_;
};

}  // namespace nbx
