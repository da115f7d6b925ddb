#include "math/field.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include <sys/mman.h>

#include "util/log.h"
#include "util/memory_block.h"

namespace nbx {

namespace {

// Lets four-wide loops load past the last element.
constexpr std::size_t kSpare = 4;

std::atomic<std::uint64_t> allocations{0}, bytes_owned{0};

// A block for `capacity` elements of `size` bytes.
std::size_t block_bytes(std::uint64_t capacity, std::size_t size) {
  return (capacity + kSpare) * size;
}

// A stencil reads many rows of a field at once, each on a page of its own. With large pages their
// addresses stay in the processor's table. Only pages that the field fills completely are large,
// so that what it hasn't reached takes no memory.
void prefer_large_pages(void* block, std::size_t bytes) {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (begin + bytes) & ~(kLargePage - 1);
  if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

}  // namespace

template <class T>
Field<T> Field<T>::view(T* data, int nx, int ny, int nz) {
  Field f;
  f.data_ = data;
  f.nx_ = nx;
  f.ny_ = ny;
  f.nz_ = nz;
  f.capacity_ = f.count();
  return f;
}

template <class T>
void Field<T>::resize(int nx, int ny, int nz) {
  nx = std::max(nx, 0);
  ny = std::max(ny, 0);
  nz = std::max(nz, 0);
  const std::uint64_t count = std::uint64_t{1} * nx * ny * nz;
  if (count > capacity_) {
    // A field that grows will grow again. Memory that it hasn't reached yet takes no pages.
    const std::uint64_t capacity = std::max(count, capacity_ + capacity_ / 4);
    free();
    raw_ = allocate_block(block_bytes(capacity, sizeof(T)));
    if (!raw_) {
      LogMessage() << "Failed to allocate field memory";
      throw std::bad_alloc();
    }
    ++allocations;
    data_ = static_cast<T*>(raw_);
    capacity_ = capacity;
  }
  if (raw_ && count > reached_) {
    bytes_owned += (count - reached_) * sizeof(T);
    reached_ = count;
    prefer_large_pages(raw_, count * sizeof(T));
  }
  nx_ = nx;
  ny_ = ny;
  nz_ = nz;
}

template <class T>
void Field<T>::free() {
  if (raw_) {
    bytes_owned -= reached_ * sizeof(T);
    release_block(raw_, block_bytes(capacity_, sizeof(T)));
  }
  data_ = nullptr;
  raw_ = nullptr;
  capacity_ = reached_ = 0;
  nx_ = ny_ = nz_ = 0;
}

template <class T>
void Field<T>::copy(const Field& other) {
  if (dims() != other.dims()) resize(other.dims());
  const std::ptrdiff_t n = count();
  // The blocks of field_operators.cpp: each thread gets the memory that it works on elsewhere.
  constexpr std::ptrdiff_t block = 1 << 14, parallel = 1 << 16;
#pragma omp parallel for schedule(static) if (n >= parallel)
  for (std::ptrdiff_t i = 0; i < n; i += block)
    std::memcpy(data_ + i, other.data_ + i, std::min(block, n - i) * sizeof(T));
}

template <class T>
void Field<T>::swap(Field& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(raw_, other.raw_);
  std::swap(capacity_, other.capacity_);
  std::swap(reached_, other.reached_);
  std::swap(nx_, other.nx_);
  std::swap(ny_, other.ny_);
  std::swap(nz_, other.nz_);
}

template class Field<float>;

std::uint64_t field_allocations() { return allocations; }
std::uint64_t field_bytes() { return bytes_owned; }

}  // namespace nbx
