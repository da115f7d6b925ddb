// Field<float>: the dense 3-D array that holds every quantity of the simulation.
//
// Layout: x runs fastest, then y, then z, without padding. Element (i, j, k) lies at
// data()[i + nx * (j + ny * k)], and data() is aligned to 64 bytes in owned memory.
//
// Grid conventions, for all numerics: a box of n voxels along an axis is held in a center field of
// N = n + 2 cells, with one ghost cell at each end; interior cells have the indices 1 .. N-2.
// Velocity is staggered: U, V, W hold the component normal to the cells' west, south and low faces
// and have one more cell along their own axis:
//
//     center fields  (Nx, Ny, Nz)    sample (i, j, k) sits at center coordinates (i, j, k)
//     U  x faces     (Nx+1, Ny, Nz)                                     (i - 0.5, j, k)
//     V  y faces     (Nx, Ny+1, Nz)                                     (i, j - 0.5, k)
//     W  z faces     (Nx, Ny, Nz+1)                                     (i, j, k - 0.5)
//
// So a point at center coordinates (x, y, z) has U-grid coordinates (x + 0.5, y, z).
#pragma once

#include <cstddef>
#include <cstdint>

#include "math/vector.h"

namespace nbx {

/// A dense grid; only Field<float> exists. A field owns its block or is a view of memory that
/// somebody else owns. It isn't locked: use it on one thread at a time, or by workers on disjoint
/// ranges.
template <class T>
class Field {
 public:
  Field() = default;
  Field(int nx, int ny, int nz) { resize(nx, ny, nz); }
  ~Field() { free(); }
  Field(const Field&) = delete;
  Field& operator=(const Field&) = delete;
  Field(Field&& other) noexcept { swap(other); }
  Field& operator=(Field&& other) noexcept {
    swap(other);
    return *this;
  }

  /// A view of `data`, which must hold nx * ny * nz floats and outlive the view.
  static Field view(T* data, int nx, int ny, int nz);

  /// Sets the dimensions; contents are undefined afterwards. A negative dimension is stored as 0.
  /// The block never shrinks; if it grows, then by a quarter or more. Throws std::bad_alloc, after
  /// a log line.
  void resize(int nx, int ny, int nz);
  void resize(const Vec3i& dims) { resize(dims[0], dims[1], dims[2]); }

  /// Releases the block; all members become 0.
  void free();

  /// Copies the dimensions and the elements of `other`.
  void copy(const Field& other);

  /// Exchanges all members.
  void swap(Field& other) noexcept;

  T* data() { return data_; }
  const T* data() const { return data_; }
  int nx() const { return nx_; }
  int ny() const { return ny_; }
  int nz() const { return nz_; }
  Vec3i dims() const { return {nx_, ny_, nz_}; }
  std::size_t count() const { return std::size_t{1} * nx_ * ny_ * nz_; }
  /// Elements that the block can hold.
  std::uint64_t capacity() const { return capacity_; }
  bool owns_memory() const { return raw_ != nullptr; }

  std::size_t index(int i, int j, int k) const {
    return i + std::size_t{1} * nx_ * (j + std::size_t{1} * ny_ * k);
  }
  T& operator()(int i, int j, int k) { return data_[index(i, j, k)]; }
  const T& operator()(int i, int j, int k) const { return data_[index(i, j, k)]; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }

 private:
  T* data_ = nullptr;
  void* raw_ = nullptr;  // the allocator's block; null for a view
  std::uint64_t capacity_ = 0;
  std::uint64_t reached_ = 0;  // the most elements so far in the allocator's block
  int nx_ = 0, ny_ = 0, nz_ = 0;
};

extern template class Field<float>;

/// Blocks that fields have allocated since the program started. A simulation in its steady state
/// allocates none.
std::uint64_t field_allocations();

/// Bytes of the blocks that fields own now, as far as they have used them.
std::uint64_t field_bytes();

}  // namespace nbx
