// A vector distance transform on a dense grid: for each cell the way to the nearest surface of the
// scene's solids, and whose surface it is.
//
// It is filled in steps. `reset` makes every cell far from everything. Triangles are then voxelized
// into it and the inside is voted for, in any order; any number of threads may write at once, a
// thread that works on a cell holds kLocked in the cell's dist2. Post-processing then turns that
// state into distances.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "math/field.h"

namespace nbx {

/// T = float only. Cells are counted from the grid's low corner; the center of cell (i, j, k) lies
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
  int votes = 3;  // passes that vote; more than half of them (1 of 3, rounded down) decide

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
