// A set of blocks of a field, for work that leaves out the rest.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "math/occupancy.h"

namespace nbx {

/// Some of the blocks of a field, which cover all of its cells. The blocks at the upper ends may
/// have fewer cells.
class BlockSet {
 public:
  /// The cells of a block; along x as many as a mark has (math/lanes/near_marks.h).
  static constexpr Vec3i kEdges{16, 8, 8};

  /// No block of no field.
  BlockSet() = default;
  BlockSet(const Vec3i& dims, bool all);
  /// The blocks that hold anything.
  BlockSet(const Vec3i& dims, const Occupancy& held);

  bool contains(int i, int j, int k) const { return row(j, k)[i / kEdges[0]]; }
  bool covers(int begin, int end, int j, int k) const;
  bool all() const;
  /// Part of all blocks.
  double share() const;

  /// The flags of the blocks along x that hold row (j, k).
  std::uint8_t* row(int j, int k) { return &flags_[first_of(j, k)]; }
  const std::uint8_t* row(int j, int k) const { return &flags_[first_of(j, k)]; }
  int blocks(int axis) const { return blocks_[axis]; }

  BlockSet& operator|=(const BlockSet& other);
  /// The blocks with a cell within `cells` of a cell of the set, along each axis alone and
  /// together. The outermost two blocks of an axis are in the set together, so that none of their
  /// rows is short, and no ghost cells are without the cells beside them.
  BlockSet grown(const Vec3i& cells) const;

  /// Calls in(first, last) and out(first, last) for the stretches of begin .. end - 1 of row (j, k)
  /// that are in the set and those that aren't; `last` is one past the end.
  template <class In, class Out>
  void for_each(int j, int k, int begin, int end, const In& in, const Out& out) const {
    const std::uint8_t* const flags = row(j, k);
    while (begin < end) {
      int b = begin / kEdges[0];
      const bool is_in = flags[b];
      do ++b;
      while (b < blocks_[0] && (flags[b] != 0) == is_in);
      const int stop = std::min(b * kEdges[0], end);
      is_in ? in(begin, stop) : out(begin, stop);
      begin = stop;
    }
  }
  template <class In>
  void for_each(int j, int k, int begin, int end, const In& in) const {
    for_each(j, k, begin, end, in, [](int, int) {});
  }

 private:
  std::size_t first_of(int j, int k) const {
    return std::size_t{1} * blocks_[0] *
           (j / kEdges[1] + std::size_t{1} * blocks_[1] * (k / kEdges[2]));
  }

  Vec3i blocks_;
  std::vector<std::uint8_t> flags_;
};

}  // namespace nbx
