// SlotHandle: access to one frame of a store.
#pragma once

#include <memory>

#include "cache/bfs.h"

namespace nbx {

/// Holds a frame in its store, for one that stores it or for any number of readers, until it is
/// destroyed or released, on any thread. Empty if the frame isn't there. A thread must not wait for
/// a frame that it holds itself.
class SlotHandle {
 public:
  SlotHandle() = default;

  /// For reading. With `load` the frame is read from disk if it isn't in memory; this waits for
  /// threads that load or store this frame, but not for other frames. Without `load` only a frame
  /// in memory is taken, without waiting. With `force` the frame leaves memory with its last
  /// handle; otherwise it stays while the table has room. A file that can't be read is logged and
  /// gives an empty handle.
  SlotHandle(std::shared_ptr<BFS> store, int frame, int substep, bool load, bool force = false);

  /// For storing: an empty frame to fill and hand over by `stored`. Waits for the frame's readers.
  /// If the handle is released without `stored`, the frame is dropped from memory. Empty if `store`
  /// is null.
  static SlotHandle for_storing(std::shared_ptr<BFS> store, int frame, int substep);

  ~SlotHandle() { release(); }
  SlotHandle(SlotHandle&& other) noexcept { *this = std::move(other); }
  SlotHandle& operator=(SlotHandle&& other) noexcept;

  explicit operator bool() const { return slot_ != nullptr; }
  /// The frame. Readers may only call `grid` and the const operations.
  SimFrame& operator*() const;
  SimFrame* operator->() const { return &**this; }

  /// Hands the filled frame over to the writer and releases it. A frame whose frameTime has another
  /// number than the slot becomes a lost frame (BFS::take_lost_frames), and no file is written.
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
