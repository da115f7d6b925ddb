#include "cache/codecs/byte_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace nbx {

namespace {

char* allocate(std::size_t bytes) {
  if (void* block = allocate_block(bytes)) return static_cast<char*>(block);
  throw std::bad_alloc();
}

}  // namespace

// A block that grows will grow again. What it hasn't used yet takes no memory.
char* ByteBuffer::reserve(std::size_t size) {
  if (size <= capacity_) return data_;
  const std::size_t larger = std::max(size, capacity_ + capacity_ / 4);
  *this = ByteBuffer();
  data_ = allocate(larger);
  capacity_ = larger;
  return data_;
}

char* ByteBuffer::grow(std::size_t used, std::size_t size) {
  if (size <= capacity_) return data_;
  ByteBuffer old = std::move(*this);
  const std::size_t larger = std::max(size, old.capacity_ + old.capacity_ / 2);
  data_ = allocate(larger);
  capacity_ = larger;
  if (used > 0) std::memcpy(data_, old.data_, used);
  return data_;
}

}  // namespace nbx
