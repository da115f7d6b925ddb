#include "math/device/cuda_field.h"

#include <algorithm>
#include <utility>

#include "math/field_operators.h"
#include "math/field_pool.h"
#include "util/cuda_host_util.h"

namespace nbx {

namespace {

// CPU fields have rows without padding.
cuda::PitchedPtr host_memory(const float* data, const Vec3i& dims) {
  const std::size_t row = static_cast<std::size_t>(dims[0]) * sizeof(float);
  return {const_cast<float*>(data), row, row, static_cast<std::size_t>(dims[1])};
}

}  // namespace

CUDAField::~CUDAField() {
  if (memory_.data) cuda_check_log_only(cuda::free(memory_.data));
}

cuda::Extent CUDAField::extent() const {
  return {static_cast<std::size_t>(nx_) * sizeof(float), static_cast<std::size_t>(ny_),
          static_cast<std::size_t>(nz_)};
}

void CUDAField::resize(const Vec3i& dims) {
  nx_ = std::max(dims[0], 0);
  ny_ = std::max(dims[1], 0);
  nz_ = std::max(dims[2], 0);
  if (memory_.data && !(allocated_ == extent())) free_memory();
}

void CUDAField::free_memory() {
  void* const data = std::exchange(memory_.data, nullptr);
  if (data) cuda_check(cuda::free(data));
}

void CUDAField::free() {
  nx_ = ny_ = nz_ = 0;
  free_memory();
}

void CUDAField::allocate() {
  const cuda::Extent wanted = extent();
  if (memory_.data || wanted.width * wanted.height * wanted.depth == 0) return;
  cuda::PitchedPtr memory;
  cuda_check(cuda::malloc_3d(&memory, wanted));
  memory_ = memory;
  allocated_ = wanted;
}

CUDAFieldPtr CUDAField::ptr() {
  allocate();
  return {static_cast<float*>(memory_.data), nx_, ny_, nz_, memory_.pitch / sizeof(float)};
}

CUDAConstFieldPtr CUDAField::ptr() const {
  return {static_cast<const float*>(memory_.data), nx_, ny_, nz_, memory_.pitch / sizeof(float)};
}

void CUDAField::upload(const Field<float>& field) {
  resize(field.dims());
  allocate();
  if (!memory_.data) return;
  cuda_check(cuda::memcpy_3d({host_memory(field.data(), dims()),
                              memory_,
                              {},
                              {},
                              extent(),
                              cuda::CopyKind::kHostToDevice}));
}

void CUDAField::download(Field<float>& field) const {
  field.resize(dims());
  if (!memory_.data) return;
  cuda_check(cuda::memcpy_3d({memory_,
                              host_memory(field.data(), dims()),
                              {},
                              {},
                              extent(),
                              cuda::CopyKind::kDeviceToHost}));
}

void CUDAField::assign(const CUDAField& other) {
  resize(other.dims());
  if (!other.memory_.data) return;
  allocate();
  cuda_check(
      cuda::memcpy_3d({other.memory_, memory_, {}, {}, extent(), cuda::CopyKind::kDeviceToDevice}));
}

void CUDAField::zero(int value) {
  allocate();
  if (memory_.data) cuda_check(cuda::memset_3d(memory_, value, extent()));
}

void CUDAField::resize_offset(const Vec3i& offset, const Vec3i& dims, float fill) {
  CUDAField target;
  if (fill == 0.0f) {
    target.resize(dims);
    target.zero();
  } else {
    const FieldHandle filled = acquire_field(dims);
    set(*filled, fill);
    target.upload(*filled);
  }
  // New cell p takes old cell p + offset: the new cells lo .. hi - 1 have a source.
  cuda::Copy3DParams copy{memory_, target.memory_, {}, {}, {}, cuda::CopyKind::kDeviceToDevice};
  std::size_t size[3];
  bool overlap = memory_.data != nullptr;
  for (int a = 0; a < 3; ++a) {
    const std::size_t unit = a == 0 ? sizeof(float) : 1;
    const int lo = std::max(0, -offset[a]);
    const int hi = std::min(target.dims()[a], this->dims()[a] - offset[a]);
    overlap = overlap && lo < hi;
    if (!overlap) break;
    copy.target_pos[a] = lo * unit;
    copy.source_pos[a] = (lo + offset[a]) * unit;
    size[a] = (hi - lo) * unit;
  }
  if (overlap) {
    copy.extent = {size[0], size[1], size[2]};
    cuda_check(cuda::memcpy_3d(copy));
  }
  swap(target);
}

void CUDAField::swap(CUDAField& other) noexcept {
  std::swap(memory_, other.memory_);
  std::swap(allocated_, other.allocated_);
  std::swap(nx_, other.nx_);
  std::swap(ny_, other.ny_);
  std::swap(nz_, other.nz_);
}

}  // namespace nbx
