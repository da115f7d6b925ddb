// A memory block for encoded grids that grows while it is filled.
#pragma once

#include <cstddef>
#include <memory>

namespace nbx {

/// A block of bytes. It keeps its memory until it is destroyed; new bytes are undefined.
class ByteBuffer {
 public:
  /// The block, with room for `size` bytes; its contents may be lost. Throws std::bad_alloc.
  char* reserve(std::size_t size);
  /// The same, but keeps the first `used` bytes and grows the block by at least half, so that
  /// filling it step by step takes linear time.
  char* grow(std::size_t used, std::size_t size);
  char* data() { return data_.get(); }
  std::size_t capacity() const { return capacity_; }

 private:
  std::unique_ptr<char[]> data_;
  std::size_t capacity_ = 0;
};

}  // namespace nbx
