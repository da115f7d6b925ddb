// How a voxelizer writes into a sparse field: cell by cell, with the last blocks kept, and with the
// same result in any order.
#pragma once

#include <atomic>
#include <cmath>

#include "math/sparse_field.h"

namespace nbx {

/// The place of a thread in a field. It keeps eight neighboring blocks, all that a small triangle
/// lies in.
class BlockCursor {
 public:
  explicit BlockCursor(SparseField<float, 3>& field) : field_(&field) {}

  /// The cell; its block is made if it doesn't exist.
  float& cell(int x, int y, int z) {
    const Vec3i wanted(x >> 3, y >> 3, z >> 3);
    Block& block = blocks_[(wanted[0] & 1) | (wanted[1] & 1) << 1 | (wanted[2] & 1) << 2];
    if (wanted != block.at) block = {wanted, field_->hash_insert(x, y, z).data};
    return block.data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)];
  }

 private:
  struct Block {
    Vec3i at{-1, -1, -1};
    float* data = nullptr;
  };

  SparseField<float, 3>* field_;
  Block blocks_[8];  // by the last bit of each coordinate
};

/// Reads a cell while other threads may merge into it.
inline float load(float& cell) {
  return std::atomic_ref<float>(cell).load(std::memory_order_relaxed);
}

/// An atomic maximum by magnitude; of two values of equal magnitude the positive one wins. Any
/// number of threads may merge into a cell, with the same result in any order.
inline void merge_largest(float& cell, float value) {
  const auto wins = [](float a, float b) {
    return std::abs(a) != std::abs(b) ? std::abs(a) > std::abs(b) : a > b;
  };
  std::atomic_ref<float> stored(cell);
  float old = stored.load(std::memory_order_relaxed);
  while (wins(value, old) && !stored.compare_exchange_weak(old, value, std::memory_order_relaxed)) {
  }
}

}  // namespace nbx
