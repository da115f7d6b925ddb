#include "math/field.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <utility>

#include "util/log.h"

namespace nbx {

namespace {

constexpr std::align_val_t kAlignment{64};
// Lets four-wide loops load past the last element.
constexpr std::size_t kSpare = 4;

std::atomic<std::uint64_t> allocations{0};

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
  const std::uint64_t count =
      static_cast<std::uint64_t>(nx) * static_cast<std::uint64_t>(ny) * static_cast<std::uint64_t>(nz);
  if (count > capacity_) {
    free();
    raw_ = ::operator new((count + kSpare) * sizeof(T), kAlignment, std::nothrow);
    if (!raw_) {
      LogMessage() << "Failed to allocate field memory";
      throw std::bad_alloc();
    }
    ++allocations;
    data_ = static_cast<T*>(raw_);
    capacity_ = count;
  }
  nx_ = nx;
  ny_ = ny;
  nz_ = nz;
}

template <class T>
void Field<T>::free() {
  if (raw_) ::operator delete(raw_, kAlignment);
  data_ = nullptr;
  raw_ = nullptr;
  capacity_ = 0;
  nx_ = ny_ = nz_ = 0;
}

template <class T>
void Field<T>::copy(const Field& other) {
  if (dims() != other.dims()) resize(other.dims());
  if (count() > 0) std::memcpy(data_, other.data_, count() * sizeof(T));
}

template <class T>
void Field<T>::swap(Field& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(raw_, other.raw_);
  std::swap(capacity_, other.capacity_);
  std::swap(nx_, other.nx_);
  std::swap(ny_, other.ny_);
  std::swap(nz_, other.nz_);
}

template class Field<float>;

std::uint64_t field_allocations() { return allocations; }

}  // namespace nbx
