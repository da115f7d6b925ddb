// How a voxelizer writes into a sparse field: cell by cell, with the block of the last cell kept,
// and with the same result in any order.
#pragma once

#include <atomic>
#include <cmath>

#include "math/sparse_field.h"

namespace nbx {

/// The place of a thread in a field. Cells come in rows, so most lie in the block of the last one.
class BlockCursor {
 public:
  explicit BlockCursor(SparseField<float, 3>& field) : field_(&field) {}

  /// The cell; its block is made if it doesn't exist.
  float& cell(int x, int y, int z) {
    const Vec3i wanted(x >> 3, y >> 3, z >> 3);
    if (wanted != block_) {
      data_ = field_->hash_insert(x, y, z).data;
      block_ = wanted;
    }
    return data_[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)];
  }

 private:
  SparseField<float, 3>* field_;
  Vec3i block_{-1, -1, -1};
  float* data_ = nullptr;
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
