#include "math/sparse_field.h"

#include <algorithm>
#include <bit>

#include <omp.h>

#include "util/exception.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::size_t kFirstMapSize = 1024;

int origin(int x) { return x & ~7; }

std::uint64_t block_key(int x, int y, int z) {
  return PackedSparseBlock::pack(origin(x), origin(y), origin(z));
}

[[noreturn]] void overflow() {
  LogMessage() << "sparse hash overflow";
  throw Exception("sparse hash overflow");
}

// A block that goes back to the pool unless it is released from the pointer.
struct ToPool {
  void operator()(SparseBlock* block) const { block_pool().release(block); }
};
using PooledBlock = std::unique_ptr<SparseBlock, ToPool>;

void release_block(float* data) { block_pool().release(reinterpret_cast<SparseBlock*>(data)); }

bool any_above(const float* data, int count, float threshold) {
  constexpr int kGroup = 64;
  for (int i = 0; i < count; i += kGroup) {
    int above = 0;
    for (int l = 0; l < kGroup; ++l) above |= data[i + l] > threshold;
    if (above) return true;
  }
  return false;
}

}  // namespace

template <class T, int N>
SparseField<T, N>::SparseField() {
  rebuild_map(kFirstMapSize);
}

template <class T, int N>
std::size_t SparseField<T, N>::first_slot(int x, int y, int z) const {
  const auto u = [](int c) { return static_cast<std::uint32_t>(origin(c)); };
  return (u(x) * 541 + u(y) * 79 + u(z) * 31) & mask_;
}

template <class T, int N>
std::size_t SparseField<T, N>::find_slot(int x, int y, int z) const {
  const std::uint64_t wanted = block_key(x, y, z);
  std::size_t slot = first_slot(x, y, z);
  for (std::uint64_t stride = 1; stride <= mask_; ++stride) {
    const std::uint64_t key = map_[slot].key.load(std::memory_order_acquire);
    if (key == wanted) return slot;
    if (key == PackedSparseBlock::kUnused) return kNoSlot;
    slot = (slot + stride) & mask_;
  }
  overflow();
}

template <class T, int N>
PackedSparseBlock* SparseField<T, N>::find(int x, int y, int z) {
  const std::size_t slot = find_slot(x, y, z);
  return slot == kNoSlot ? nullptr : &map_[slot];
}

template <class T, int N>
const PackedSparseBlock* SparseField<T, N>::find(int x, int y, int z) const {
  const std::size_t slot = find_slot(x, y, z);
  return slot == kNoSlot ? nullptr : &map_[slot];
}

template <class T, int N>
PackedSparseBlock& SparseField<T, N>::free_slot(int x, int y, int z) {
  std::size_t slot = first_slot(x, y, z);
  for (std::uint64_t stride = 1; stride <= mask_; ++stride) {
    if (map_[slot].key.load(std::memory_order_relaxed) >= PackedSparseBlock::kDeleted)
      return map_[slot];
    slot = (slot + stride) & mask_;
  }
  overflow();
}

template <class T, int N>
PackedSparseBlock& SparseField<T, N>::hash_insert(int x, int y, int z) {
  if (PackedSparseBlock* found = find(x, y, z)) return *found;

  // Filled before the lock is taken, so that other threads wait less.
  PooledBlock block(block_pool().acquire());
  std::fill_n(block->values, kBlockSize, 0.0f);

  const std::lock_guard lock(insertion_);
  hash_resize(0);
  // Another thread may have inserted this block, or taken the free slot.
  if (PackedSparseBlock* found = find(x, y, z)) return *found;
  PackedSparseBlock& slot = free_slot(x, y, z);
  blocks_.push_back({origin(x), origin(y), origin(z), block->values});
  slot.data = block.release()->values;
  slot.key.store(block_key(x, y, z), std::memory_order_release);
  return slot;
}

template <class T, int N>
void SparseField<T, N>::hash_resize(std::size_t new_blocks) {
  const std::size_t size = map_size();
  if (size / 2 >= std::max(new_blocks, blocks_.size() + 1)) return;
  // Other threads may be reading the map.
  if (omp_in_parallel()) {
    LogMessage() << "hash_resize: new " << new_blocks << " blocks " << blocks_.size() << " map "
                 << size;
    throw Exception("the map of a sparse field can't grow in a parallel region");
  }
  rebuild_map(std::bit_ceil(2 * std::max(new_blocks, size)));
}

template <class T, int N>
void SparseField<T, N>::rebuild_map(std::size_t size) {
  map_ = std::make_unique<PackedSparseBlock[]>(size);
  mask_ = size - 1;
  for (const SparseBlockEntry& b : blocks_) {
    PackedSparseBlock& slot = free_slot(b.x, b.y, b.z);
    slot.data = b.data;
    slot.key.store(block_key(b.x, b.y, b.z), std::memory_order_relaxed);
  }
}

template <class T, int N>
void SparseField<T, N>::clear() {
  for (const SparseBlockEntry& b : blocks_) release_block(b.data);
  blocks_.clear();
  for (std::size_t i = 0; i < map_size(); ++i)
    map_[i].key.store(PackedSparseBlock::kUnused, std::memory_order_relaxed);
}

template <class T, int N>
void SparseField<T, N>::clear_blocks_le(float threshold) {
  const std::ptrdiff_t count = blocks_.size();
  std::vector<char> stays(blocks_.size());
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < count; ++i)
    stays[i] = any_above(blocks_[i].data, kBlockSize, threshold);
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    if (stays[i]) continue;
    const SparseBlockEntry& b = blocks_[i];
    find(b.x, b.y, b.z)->key.store(PackedSparseBlock::kDeleted, std::memory_order_relaxed);
    release_block(b.data);
  }
  blocks_.clear();
  std::size_t deleted = 0;
  for (std::size_t i = 0; i < map_size(); ++i) {
    const std::uint64_t key = map_[i].key.load(std::memory_order_relaxed);
    deleted += key == PackedSparseBlock::kDeleted;
    if (key >= PackedSparseBlock::kDeleted) continue;
    const auto coordinate = [=](int shift) {
      return static_cast<int>((key >> shift) & static_cast<std::uint64_t>(kMaxCoordinate));
    };
    blocks_.push_back({coordinate(42), coordinate(21), coordinate(0), map_[i].data});
  }
  // A search ends at an unused slot. At most half of the slots hold blocks; this keeps a quarter
  // unused no matter how often blocks are added and removed.
  if (deleted > map_size() / 4) rebuild_map(map_size());
}

template <class T, int N>
void SparseField<T, N>::process(float threshold, float a, float b) {
  const std::ptrdiff_t count = blocks_.size();
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float* data = blocks_[i].data;
    for (int v = 0; v < kBlockSize; ++v) data[v] = data[v] > threshold ? a : b;
  }
}

template <class T, int N>
T SparseField<T, N>::value(int x, int y, int z) const {
  const PackedSparseBlock* block = find(x, y, z);
  return block ? block->data[voxel_index(x & 7, y & 7, z & 7)] : T(0);
}

template class SparseField<float, 3>;

}  // namespace nbx
