#include "cache/slot_handle.h"

#include <utility>

#include "cache/store/frame_table.h"

namespace nbx {

SlotHandle::SlotHandle(std::shared_ptr<BFS> store, int frame, int substep, bool load, bool force)
    : force_(force) {
  if (store) slot_ = store->table_->open_for_reading(frame, substep, load, force);
  if (slot_) store_ = std::move(store);  // an empty handle owns nothing
}

SlotHandle SlotHandle::for_storing(std::shared_ptr<BFS> store, int frame, int substep) {
  SlotHandle handle;
  if (store) handle.slot_ = store->table_->open_for_storing(frame, substep);
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

SimFrame& SlotHandle::operator*() const { return slot_->data; }

void SlotHandle::stored() {
  if (slot_ && !slot_->data.ownsData) slot_->data.pack();
  give_back(true);
}

void SlotHandle::release() { give_back(false); }

void SlotHandle::give_back(bool stored) {
  using Use = BFS::Table::Use;
  const Use use = !stores_ ? Use::kRead : stored ? Use::kStored : Use::kAbandoned;
  if (slot_) store_->table_->give_back(*std::exchange(slot_, nullptr), use, force_);
  store_.reset();
}

}  // namespace nbx
