// A memory block for encoded grids that grows while it is filled.
#pragma once

#include <cstddef>
#include <utility>

#include "util/memory_block.h"

namespace nbx {

/// A block of bytes. It keeps its memory until it is destroyed; new bytes are undefined.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  ~ByteBuffer() { release_block(data_, capacity_); }
  ByteBuffer(ByteBuffer&& other) noexcept { swap(other); }
  ByteBuffer& operator=(ByteBuffer&& other) noexcept {
    swap(other);
    return *this;
  }

  /// The block, with room for `size` bytes; its contents may be lost. Throws std::bad_alloc.
  char* reserve(std::size_t size);
  /// The same, but keeps the first `used` bytes and grows the block by at least half, so that
  /// filling it step by step takes linear time.
  char* grow(std::size_t used, std::size_t size);
  char* data() { return data_; }
  std::size_t capacity() const { return capacity_; }

 private:
  void swap(ByteBuffer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(capacity_, other.capacity_);
  }

  char* data_ = nullptr;
  std::size_t capacity_ = 0;
};

}  // namespace nbx
