// A vector distance transform on a dense grid: for each cell the offset to the nearest surface of
// the solids of a scene, and the vertex that is nearest.
//
// It is filled in steps. After `reset` every cell is far from everything. Then triangles are
// voxelized into it and lines vote for the inside, in any order. Any number of threads may write at
// once: a thread that works on a cell holds kLocked in its dist2. Post-processing turns that state
// into distances.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "math/field.h"

namespace nbx {

/// T is float. Cells are counted from the grid's low corner; the center of cell (i, j, k) lies
/// at (i, j, k). All arrays have the grid's dimensions; `label` has the order of the fields.
template <class T>
struct VCVDT {
  static constexpr T kFar = std::numeric_limits<T>::max();  // no surface is known
  static constexpr T kLocked = -1;

  // A label, from the top: 1 bit that keeps a cell as it is, 3 bits that count votes for "inside"
  // and later hold 0 or 1, and the id of the vertex that is nearest, kNoId for none.
  static constexpr std::uint32_t kIdMask = 0x0fffffff;
  static constexpr std::uint32_t kNoId = kIdMask;
  static constexpr std::uint32_t kVote = 0x10000000;
  static constexpr std::uint32_t kVotesMask = 0x70000000;
  static constexpr std::uint32_t kFixed = 0x80000000;

  Field<T> dx, dy, dz;  // offset from a cell towards the nearest surface, in cells
  Field<T> dist2;       // squared distance of the surface, in squared cells
  std::vector<std::uint32_t> label;
  // Passes that vote. A cell with more than votes / 2 votes, rounded down, is inside.
  int votes = 3;

  /// Sizes all arrays; every cell is far, outside and without an id. Memory is kept.
  void reset(const Vec3i& dims);

  Vec3i dims() const { return dist2.dims(); }
  std::size_t index(int i, int j, int k) const { return dist2.index(i, j, k); }

  int inside_votes(std::size_t cell) const {
    return static_cast<int>((label[cell] & kVotesMask) / kVote);
  }
};

extern template struct VCVDT<float>;

}  // namespace nbx
