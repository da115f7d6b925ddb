#include "math/field_pool.h"

#include <algorithm>
#include <cstdlib>

#include "util/cuda_runtime.h"
#include "util/format_size.h"
#include "util/log.h"

namespace nbx {

template <class Element>
Element* Pool<Element>::add() {
  // Room for every known element, so that `release` never allocates.
  if (free_.capacity() <= known_.size())
    free_.reserve(std::max<std::size_t>(2, 2 * free_.capacity()));
  auto element = std::make_unique_for_overwrite<Element>();
  known_.insert(element.get());
  return element.release();
}

template <class Element>
void Pool<Element>::release(Element* element) {
  if (!element) return;
  const std::lock_guard lock(mutex_);
  if (!known_.contains(element)) {
    LogMessage() << "FATAL: releasing unknown field";
    std::abort();
  }
  free_.push_back(element);
}

template <class Element>
typename Pool<Element>::Counts Pool<Element>::drop_unused() {
  const std::lock_guard lock(mutex_);
  while (!free_.empty()) {
    Element* element = free_.back();
    free_.pop_back();
    known_.erase(element);
    delete element;
  }
  return {known_.size(), known_.size()};
}

template <class Element>
void Pool<Element>::release_unused() {
  const Counts left = drop_unused();
  LogMessage() << "FieldPool(" << tag_ << ")::release_unused fields " << left.known << ", free "
               << left.known - left.in_use;
}

template <class Element>
typename Pool<Element>::Counts Pool<Element>::counts() const {
  const std::lock_guard lock(mutex_);
  return {known_.size() - free_.size(), known_.size()};
}

template class Pool<Field<float>>;
template class Pool<SparseBlock>;

// Never destroyed, since handles in static objects may give fields back at the very end.
FieldPool& field_pool() {
  static FieldPool& pool = *new FieldPool(4);
  return pool;
}

BlockPool& block_pool() {
  static BlockPool& pool = *new BlockPool(8);
  return pool;
}

namespace {

FieldHandle handle(Field<float>* field) {
  return FieldHandle(field, [](Field<float>* f) { field_pool().release(f); });
}

}  // namespace

FieldHandle acquire_field() { return handle(field_pool().acquire()); }

FieldHandle acquire_field(const Vec3i& dims) {
  const std::uint64_t count = std::uint64_t{1} * dims[0] * dims[1] * dims[2];
  const auto fits = [count](const Field<float>& f) { return f.capacity() >= count; };
  FieldHandle field = handle(field_pool().acquire(fits));
  field->resize(dims);
  return field;
}

void mem_stats() {
  const auto dense = field_pool().counts();
  const auto blocks = block_pool().counts();
  std::size_t free_bytes = 0, total_bytes = 0;
  if (cuda::mem_get_info(&free_bytes, &total_bytes) != cuda::kSuccess) free_bytes = total_bytes = 0;
  LogMessage() << "mem stats: " << dense.in_use << "/" << dense.known << " dense fields, "
               << blocks.in_use << "/" << blocks.known << " sparse blocks, "
               << format_size(free_bytes, 2) << "/" << format_size(total_bytes, 2) << " GPU mem";
}

}  // namespace nbx
