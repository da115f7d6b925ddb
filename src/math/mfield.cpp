#include "math/mfield.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

#include "math/field_operators.h"
#include "util/cuda_use_flags.h"
#include "util/exception.h"
#include "util/log.h"

namespace nbx {

namespace {

std::atomic<std::uint64_t> move_count{0};

const char* side_name(Location location) { return location == kGpu ? "gpu" : "cpu"; }

// dst(p) = src(p + offset), or `fill` outside of src.
void shift(Field<float>& dst, const Field<float>& src, const Vec3i& offset, float fill) {
  const int lo = std::clamp(-offset[0], 0, dst.nx());
  const int hi = std::clamp(src.nx() - offset[0], lo, dst.nx());
#pragma omp parallel for schedule(static)
  for (int k = 0; k < dst.nz(); ++k)
    for (int j = 0; j < dst.ny(); ++j) {
      float* row = dst.data() + dst.index(0, j, k);
      const int sj = j + offset[1], sk = k + offset[2];
      const bool inside = lo < hi && sj >= 0 && sj < src.ny() && sk >= 0 && sk < src.nz();
      if (!inside) {
        std::fill_n(row, dst.nx(), fill);
        continue;
      }
      std::fill(row, row + lo, fill);
      const float* from = src.data() + src.index(lo + offset[0], sj, sk);
      std::memcpy(row + lo, from, (hi - lo) * sizeof(float));
      std::fill(row + hi, row + dst.nx(), fill);
    }
}

}  // namespace

Location thread_location() { return cuda_use_flags().on_gpu() ? kGpu : kCpu; }

Vec3i MField::dims() const { return location_ == kCpu && cpu_ ? cpu_->dims() : gpu_.dims(); }

const Field<float>& MField::read_cpu() const {
  move_to(kCpu);
  if (!cpu_) throw Exception("the field has no storage on the CPU");
  return *cpu_;
}

Field<float>& MField::write_cpu() {
  read_cpu();
  return *cpu_;
}

Field<float>& MField::overwrite_cpu() {
  if (empty()) throw Exception("the field has no storage on the CPU");
  return overwrite_cpu(dims());
}

Field<float>& MField::overwrite_cpu(const Vec3i& dims) {
  if (!cpu_) cpu_ = acquire_field(dims);
  cpu_->resize(dims);
  gpu_.free();
  location_ = kCpu;
  return *cpu_;
}

const CUDAField& MField::read_gpu() const {
  if (!gpu_.has_memory() && cpu_) move_to(kGpu);
  return gpu_;
}

CUDAField& MField::overwrite_gpu() {
  if (!gpu_.has_memory() && cpu_) {
    CUDAField side;
    side.resize(cpu_->dims());
    side.ptr();
    gpu_.swap(side);
    cpu_.reset();
    location_ = kGpu;
  }
  return gpu_;
}

std::uint64_t MField::moves() { return move_count; }

void MField::move_to(Location target) const {
  if (target == location_) return;
  if (!empty()) {
    LogMessage() << "moving mfield from " << side_name(location_) << " to " << side_name(target);
    // The new side is complete before the old one goes, so that a failure loses nothing.
    if (target == kGpu && cpu_) {
      CUDAField side;
      side.upload(*cpu_);
      gpu_.swap(side);
      cpu_.reset();
      ++move_count;
    } else if (target == kCpu && gpu_.has_memory()) {
      FieldHandle side = acquire_field();
      gpu_.download(*side);
      cpu_ = std::move(side);
      gpu_.free();
      ++move_count;
    }
  }
  location_ = target;
}

void MField::resize(const Vec3i& dims) {
  if (location_ == kGpu) {
    gpu_.resize(dims);
    gpu_.ptr();
  } else {
    if (!cpu_) cpu_ = acquire_field(dims);
    cpu_->resize(dims);
  }
}

void MField::resize(Location location, const Vec3i& dims) {
  move_to(location);
  resize(dims);
}

void MField::resize_offset(const Vec3i& offset, const Vec3i& dims, float fill) {
  if (empty()) {
    resize(dims);
  } else if (location_ == kGpu) {
    gpu_.resize_offset(offset, dims, fill);
  } else {
    const FieldHandle target = acquire_field(dims);
    shift(*target, *cpu_, offset, fill);
    cpu_->swap(*target);
  }
}

void MField::zero() {
  if (empty()) return;
  if (location_ == kGpu)
    gpu_.zero();
  else
    set(*cpu_, 0.0f);
}

void MField::provide(const Vec3i& dims) {
  if (!empty()) return;
  resize(thread_location(), dims);
  zero();
}

void MField::release() {
  cpu_.reset();
  gpu_.free();
}

void MField::swap(MField& other) {
  other.move_to(location_);
  gpu_.swap(other.gpu_);
  // The handles stay, so that a holder of one sees the new contents.
  if (cpu_ && other.cpu_)
    cpu_->swap(*other.cpu_);
  else
    cpu_.swap(other.cpu_);
}

void MField::assign(const MField& other) {
  if (&other == this) return;
  if (other.empty()) {
    release();
  } else if (other.cpu_) {
    assign(*other.cpu_);
  } else if (location_ == kGpu) {
    gpu_.assign(other.gpu_);
  } else {
    if (!cpu_) cpu_ = acquire_field();
    other.gpu_.download(*cpu_);
    ++move_count;
  }
}

void MField::assign(const Field<float>& field) {
  if (location_ == kGpu) {
    gpu_.upload(field);
    ++move_count;
  } else {
    if (!cpu_) cpu_ = acquire_field(field.dims());
    cpu_->copy(field);
  }
}

}  // namespace nbx
