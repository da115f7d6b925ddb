// A dense grid in device memory, the GPU side of an MField. Rows are padded to the device's pitch.
#pragma once

#include <cstddef>

#include "math/field.h"
#include "util/cuda_runtime.h"

namespace nbx {

/// What a kernel receives by value: element (i, j, k) lies at data[(k * ny + j) * pitch + i].
struct CUDAFieldPtr {
  float* data = nullptr;
  int nx = 0, ny = 0, nz = 0;
  std::size_t pitch = 0;  // floats
};

/// The same for a field that the kernel only reads.
struct CUDAConstFieldPtr {
  const float* data = nullptr;
  int nx = 0, ny = 0, nz = 0;
  std::size_t pitch = 0;  // floats
};

/// Device memory is allocated lazily: `resize` stores the dimensions and frees memory of another
/// size; `ptr` and copies allocate. Every runtime failure throws CUDAException. Use it only on a
/// thread that is on the GPU.
class CUDAField {
 public:
  CUDAField() = default;
  ~CUDAField();
  CUDAField(const CUDAField&) = delete;
  CUDAField& operator=(const CUDAField&) = delete;

  void resize(const Vec3i& dims);
  void free();

  /// Takes dimensions and contents of `field`.
  void upload(const Field<float>& field);
  /// `field` takes dimensions and contents.
  void download(Field<float>& field) const;
  /// Device-to-device copy.
  void assign(const CUDAField& other);
  /// Fills all bytes with `value`.
  void zero(int value = 0);
  /// As MField::resize_offset.
  void resize_offset(const Vec3i& offset, const Vec3i& dims, float fill);
  void swap(CUDAField& other) noexcept;

  /// The record for kernels; allocates if there is no memory of the right extent.
  CUDAFieldPtr ptr();
  /// The record for kernels that read; `data` is null if there is no memory.
  CUDAConstFieldPtr ptr() const;

  Vec3i dims() const { return {nx_, ny_, nz_}; }
  bool has_memory() const { return memory_.data != nullptr; }

 private:
  cuda::Extent extent() const;
  void allocate();
  void free_memory();

  cuda::PitchedPtr memory_;
  cuda::Extent allocated_;
  int nx_ = 0, ny_ = 0, nz_ = 0;
};

}  // namespace nbx
