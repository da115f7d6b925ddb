#include "cache/codecs/byte_buffer.h"

#include <algorithm>
#include <cstring>

namespace nbx {

char* ByteBuffer::reserve(std::size_t size) {
  if (size > capacity_) {
    data_.reset();
    capacity_ = 0;
    data_ = std::make_unique_for_overwrite<char[]>(size);
    capacity_ = size;
  }
  return data_.get();
}

char* ByteBuffer::grow(std::size_t used, std::size_t size) {
  if (size > capacity_) {
    const std::size_t larger = std::max(size, capacity_ + capacity_ / 2);
    auto data = std::make_unique_for_overwrite<char[]>(larger);
    if (used > 0) std::memcpy(data.get(), data_.get(), used);
    data_ = std::move(data);
    capacity_ = larger;
  }
  return data_.get();
}

}  // namespace nbx
