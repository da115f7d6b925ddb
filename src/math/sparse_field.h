// A scalar field over a huge, mostly empty voxel space. Only the blocks of 8 x 8 x 8 voxels that
// were touched exist. It holds the rasterized emitters and the pending sources of a channel.
//
// Blocks are found through an open-addressing hash map (Knuth, The Art of Computer Programming,
// volume 3, 6.4; triangular probing). Many threads may read it and insert into it at once: reads
// take no lock, insertion of a new block is serialized, and a key is published after its data.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "math/field_pool.h"
#include "math/int_box.h"

namespace nbx {

/// One slot of the hash map. A reader that sees a key sees valid data.
struct PackedSparseBlock {
  static constexpr std::uint64_t kUnused = ~std::uint64_t{0};
  static constexpr std::uint64_t kDeleted = ~std::uint64_t{0} - 1;

  std::atomic<std::uint64_t> key{kUnused};
  float* data = nullptr;

  /// The key of the block at origin (x, y, z): 21 bits per coordinate.
  static std::uint64_t pack(int x, int y, int z) {
    return (static_cast<std::uint64_t>(x) << 42) | (static_cast<std::uint64_t>(y) << 21) |
           static_cast<std::uint64_t>(z);
  }
};

/// One live block: its origin (multiples of 8) and its 512 floats, x fastest.
struct SparseBlockEntry {
  int x = 0, y = 0, z = 0;
  float* data = nullptr;
};

/// Only SparseField<float, 3> exists. Voxel coordinates are absolute in the domain, 0 .. 2^21 - 1.
/// Any number of threads may call `find` and `hash_insert` at once; everything else needs exclusive
/// use. Callers must order their own writes to a block.
template <class T, int N>
class SparseField {
 public:
  static constexpr int kEdge = 8;
  static constexpr int kBlockSize = 512;
  static constexpr int kMaxCoordinate = (1 << 21) - 1;

  SparseField();
  ~SparseField() { clear(); }
  SparseField(const SparseField&) = delete;
  SparseField& operator=(const SparseField&) = delete;

  /// The slot of the block that holds voxel (x, y, z); creates a zero-filled block if there is
  /// none. A new block may need a larger map, which throws inside a parallel region: call
  /// `hash_resize` before the region. A larger map invalidates slots, but not the blocks' data.
  PackedSparseBlock& hash_insert(int x, int y, int z);

  /// The slot of the block that holds the voxel, or null.
  PackedSparseBlock* find(int x, int y, int z);
  const PackedSparseBlock* find(int x, int y, int z) const;

  /// Makes room in the map for `new_blocks` blocks in total. Throws Exception inside a parallel
  /// region if the map would have to grow.
  void hash_resize(std::size_t new_blocks);

  /// Gives all blocks back to the pool and empties the map, which keeps its size.
  void clear();

  /// Removes every block without a value above `threshold`. `blocks()` is in map order afterwards.
  void clear_blocks_le(float threshold);

  /// Sets every value above `threshold` to `a` and all others to `b`.
  void process(float threshold, float a, float b);

  const std::vector<SparseBlockEntry>& blocks() const { return blocks_; }
  std::size_t map_size() const { return mask_ + 1; }
  bool empty() const { return blocks_.empty(); }

  /// The value of a voxel; 0 if it has no block.
  T value(int x, int y, int z) const;

  static int voxel_index(int lx, int ly, int lz) { return (lz * kEdge + ly) * kEdge + lx; }

 private:
  static constexpr std::size_t kNoSlot = ~std::size_t{0};

  std::size_t first_slot(int x, int y, int z) const;
  std::size_t find_slot(int x, int y, int z) const;
  PackedSparseBlock& free_slot(int x, int y, int z);
  void rebuild_map(std::size_t size);

  std::vector<SparseBlockEntry> blocks_;      // every live block, in no particular order
  std::unique_ptr<PackedSparseBlock[]> map_;  // size a power of two
  std::uint64_t mask_ = 0;                    // map size - 1
  std::mutex insertion_;                      // serializes the insertion of blocks
};

extern template class SparseField<float, 3>;

}  // namespace nbx
