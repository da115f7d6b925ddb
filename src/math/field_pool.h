// Pools that keep the memory of grids between uses. A simulation acquires and releases dozens of
// full-size fields in every step; with the pools it stops allocating after its first steps.
//
// A process has two: the dense pool, of fields with their blocks, and the pool of the 8 x 8 x 8
// blocks of sparse fields. Every part of the process shares them, since memory that one part
// releases is what the next one needs. Both live from their first use to the end of the process.
// All operations may be called from any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "math/field.h"

namespace nbx {

/// The 512 voxels of a sparse block, x fastest. Uninitialized when it comes from the pool.
struct alignas(64) SparseBlock {
  float values[512];
};

/// A pool of elements of one type, last in, first out: the most recently released element is still
/// in the cache and likely of the right size. An element keeps its block and its old contents, so
/// the caller must size and fill it.
template <class Element>
class Pool {
 public:
  /// `tag` names the pool in the log.
  explicit Pool(int tag) : tag_(tag) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  /// A recycled or new element.
  Element* acquire() {
    return acquire([](const Element&) { return true; });
  }

  /// The same; of the elements that aren't in use, it prefers those for which `suits(element)` is
  /// true.
  template <class Suits>
  Element* acquire(Suits suits);

  /// Gives an element back; null is ignored. An address that isn't the pool's is a programming
  /// error, which is logged and ends the process.
  void release(Element* element);

  struct Counts {
    std::size_t in_use = 0;
    std::size_t known = 0;
  };
  Counts counts() const;

  /// Destroys every element that isn't in use, and returns the counts after that.
  Counts drop_unused();
  /// The same, with a line in the log.
  void release_unused();

 private:
  // Addresses differ in their low bits and, between heap regions, in their high bits.
  struct AddressHash {
    std::size_t operator()(const Element* p) const {
      const auto a = reinterpret_cast<std::uintptr_t>(p);
      return static_cast<std::uint32_t>((a >> 31) ^ a);
    }
  };

  Element* add();

  const int tag_;
  mutable std::mutex mutex_;
  std::unordered_set<Element*, AddressHash> known_;  // every element that exists
  std::vector<Element*> free_;                       // a stack of those not in use
};

template <class Element>
template <class Suits>
Element* Pool<Element>::acquire(Suits suits) {
  const std::lock_guard lock(mutex_);
  if (free_.empty()) return add();
  auto found = std::find_if(free_.rbegin(), free_.rend(), [&](Element* e) { return suits(*e); });
  if (found == free_.rend()) found = free_.rbegin();
  Element* element = *found;
  free_.erase(std::next(found).base());
  return element;
}

using FieldPool = Pool<Field<float>>;
using BlockPool = Pool<SparseBlock>;

extern template class Pool<Field<float>>;
extern template class Pool<SparseBlock>;

FieldPool& field_pool();
BlockPool& block_pool();

/// A pooled field. Destroying the last handle gives it back.
using FieldHandle = std::shared_ptr<Field<float>>;

/// Takes a field from the dense pool. Its size and contents are those that its last user left.
FieldHandle acquire_field();

/// Takes a field from the dense pool, if possible one that is large enough, and sizes it; contents
/// are undefined.
FieldHandle acquire_field(const Vec3i& dims);

/// Writes the memory line to the log: both pools and the device's memory.
void mem_stats();

}  // namespace nbx
