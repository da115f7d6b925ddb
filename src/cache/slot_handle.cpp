#include "cache/slot_handle.h"

#include <utility>

namespace nbx {

SlotHandle::SlotHandle(std::shared_ptr<BFS> store, int frame, int substep, bool load, bool force)
    : force_(force) {
  if (store) slot_ = store->openForReading(frame, substep, load, force);
  if (slot_) store_ = std::move(store);  // an empty handle owns nothing
}

SlotHandle SlotHandle::forStoring(std::shared_ptr<BFS> store, int frame, int substep) {
  SlotHandle handle;
  if (store) handle.slot_ = store->openForStoring(frame, substep);
  handle.store_ = std::move(store);
  handle.stores_ = true;
  return handle;
}

SlotHandle& SlotHandle::operator=(SlotHandle&& other) noexcept {
  if (this == &other) return *this;
  release();
  store_ = std::move(other.store_);
  slot_ = std::exchange(other.slot_, nullptr);
  stores_ = other.stores_;
  force_ = other.force_;
  return *this;
}

void SlotHandle::stored() { giveBack(true); }
void SlotHandle::release() { giveBack(false); }

void SlotHandle::giveBack(bool stored) {
  if (slot_) store_->giveBack(*std::exchange(slot_, nullptr), stores_, stored, force_);
  store_.reset();
}

}  // namespace nbx
