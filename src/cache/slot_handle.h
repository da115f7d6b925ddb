// Access to one frame of a store.
#pragma once

#include <memory>

#include "cache/bfs.h"

namespace nbx {

/// Holds a frame in its store, for reading by many or for storing by one, until it is destroyed or
/// released, on whatever thread. Empty if the frame isn't there. A thread must not wait for a frame
/// that it holds itself.
class SlotHandle {
 public:
  SlotHandle() = default;

  /// For reading. `load`: from disk if need be; waits for who loads or stores this very frame, and
  /// for nobody else. Without it only what is in memory, at once. `force` lets the frame leave
  /// memory with its last handle; else it stays while the table has room. A file that can't be read
  /// gives a log line and an empty handle.
  SlotHandle(std::shared_ptr<BFS> store, int frame, int substep, bool load, bool force = false);

  /// For storing: an empty frame, to be filled and then handed over by `stored`. Waits for the
  /// frame's readers. A handle that goes back without it leaves the frame as if it had never been
  /// in memory. Empty without a store.
  static SlotHandle for_storing(std::shared_ptr<BFS> store, int frame, int substep);

  ~SlotHandle() { release(); }
  SlotHandle(SlotHandle&& other) noexcept { *this = std::move(other); }
  SlotHandle& operator=(SlotHandle&& other) noexcept;

  explicit operator bool() const { return slot_ != nullptr; }
  /// The frame. Readers call nothing but `grid` and the const operations.
  SimFrame& operator*() const { return slot_->data; }
  SimFrame* operator->() const { return &slot_->data; }

  /// Hands the filled frame over to the writer and releases it. A frame whose frameTime has another
  /// number than the slot is lost (BFS::take_lost_frames), and no file is written.
  void stored();
  void release();

 private:
  void give_back(bool stored);

  std::shared_ptr<BFS> store_;
  BFS::Slot* slot_ = nullptr;
  bool stores_ = false;
  bool force_ = false;
};

}  // namespace nbx
