#include "util/device/software_device.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "util/device/cuda_backend.h"

namespace nbx::cuda {

namespace {

constexpr std::size_t kPitchUnit = 256;  // bytes
// Bytes of new memory. As floats they are NaN, which shows any read of elements that nobody wrote.
constexpr int kNewMemory = 0xff;

thread_local Error last_error = kSuccess;

std::size_t rows(const Extent& e) { return e.height * e.depth; }

// Offset of row (y, z) of a pitched memory.
std::size_t row_at(const PitchedPtr& p, std::size_t y, std::size_t z) {
  return (z * p.ysize + y) * p.pitch;
}

class SoftwareDevice final : public Backend {
 public:
  Error get_device_count(int* count) override {
    *count = 1;
    return kSuccess;
  }
  Error get_device_properties(DeviceProperties* properties, int device) override {
    if (device != 0) return result(kErrorInvalidDevice);
    const std::lock_guard lock(mutex_);
    *properties = {.name = "software device",
                   .total_global_mem = memory_,
                   .shared_mem_per_block = 0,
                   .multi_processor_count = 1};
    return kSuccess;
  }
  Error set_device(int device) override {
    return result(device == 0 ? kSuccess : kErrorInvalidDevice);
  }
  Error set_device_flags(unsigned) override { return kSuccess; }
  // Allocated memory counts as a context.
  Error context_active(bool* active, int) override {
    const std::lock_guard lock(mutex_);
    *active = !blocks_.empty();
    return kSuccess;
  }
  Error device_reset() override {
    const std::lock_guard lock(mutex_);
    while (!blocks_.empty()) drop(blocks_.begin());
    ++resets_;
    return kSuccess;
  }
  Error device_synchronize() override { return kSuccess; }
  Error get_last_error() override { return std::exchange(last_error, kSuccess); }
  Error mem_get_info(std::size_t* free_bytes, std::size_t* total_bytes) override {
    const std::lock_guard lock(mutex_);
    *free_bytes = memory_ - std::min(memory_, in_use_);
    *total_bytes = memory_;
    return kSuccess;
  }

  Error malloc(void** data, std::size_t bytes) override {
    const std::lock_guard lock(mutex_);
    *data = nullptr;
    if (const Error error = next_call()) return error;
    if (bytes == 0) return kSuccess;
    if (bytes > memory_ - std::min(memory_, in_use_)) return result(kErrorMemoryAllocation);
    *data = ::operator new (bytes, std::align_val_t{kPitchUnit}, std::nothrow);
    if (!*data) return result(kErrorMemoryAllocation);
    std::memset(*data, kNewMemory, bytes);
    blocks_.emplace(static_cast<char*>(*data), bytes);
    in_use_ += bytes;
    return kSuccess;
  }
  Error malloc_3d(PitchedPtr* memory, Extent extent) override {
    *memory = {nullptr, (extent.width + kPitchUnit - 1) / kPitchUnit * kPitchUnit, extent.width,
               extent.height};
    return malloc(&memory->data, memory->pitch * rows(extent));
  }
  Error free(void* data) override {
    if (!data) return kSuccess;
    const std::lock_guard lock(mutex_);
    const auto block = blocks_.find(static_cast<char*>(data));
    if (block == blocks_.end()) return result(kErrorInvalidValue);
    drop(block);
    return kSuccess;
  }
  Error memcpy(void* target, const void* source, std::size_t bytes, CopyKind kind) override {
    return memcpy_3d({{const_cast<void*>(source), bytes, bytes, 1},
                      {target, bytes, bytes, 1},
                      {},
                      {},
                      {bytes, 1, 1},
                      kind});
  }
  Error memcpy_3d(const Copy3DParams& copy) override {
    const std::lock_guard lock(mutex_);
    if (const Error error = next_call()) return error;
    const Extent& e = copy.extent;
    const auto [sx, sy, sz] = copy.source_pos;
    const auto [tx, ty, tz] = copy.target_pos;
    for (std::size_t z = 0; z < e.depth; ++z)
      for (std::size_t y = 0; y < e.height; ++y) {
        const char* source =
            static_cast<const char*>(copy.source.data) + row_at(copy.source, sy + y, sz + z) + sx;
        char* target =
            static_cast<char*>(copy.target.data) + row_at(copy.target, ty + y, tz + z) + tx;
        if (on_device(source, e.width) != (copy.kind != CopyKind::kHostToDevice) ||
            on_device(target, e.width) != (copy.kind != CopyKind::kDeviceToHost))
          return result(kErrorInvalidValue);
        std::memcpy(target, source, e.width);
      }
    return kSuccess;
  }
  Error memset(void* data, int value, std::size_t bytes) override {
    return memset_3d({data, bytes, bytes, 1}, value, {bytes, 1, 1});
  }
  Error memset_3d(PitchedPtr memory, int value, Extent extent) override {
    const std::lock_guard lock(mutex_);
    if (const Error error = next_call()) return error;
    for (std::size_t z = 0; z < extent.depth; ++z)
      for (std::size_t y = 0; y < extent.height; ++y) {
        char* row = static_cast<char*>(memory.data) + row_at(memory, y, z);
        if (!on_device(row, extent.width)) return result(kErrorInvalidValue);
        std::memset(row, value, extent.width);
      }
    return kSuccess;
  }

  void set_memory(std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    memory_ = bytes;
  }
  void fail_call(int n, Error error) {
    const std::lock_guard lock(mutex_);
    fail_in_ = n;
    failure_ = error;
  }
  void restart_counts() {
    const std::lock_guard lock(mutex_);
    resets_ = 0;
    fail_in_ = 0;
  }
  std::uint64_t resets() {
    const std::lock_guard lock(mutex_);
    return resets_;
  }
  std::size_t bytes_in_use() {
    const std::lock_guard lock(mutex_);
    return in_use_;
  }

 private:
  using Blocks = std::map<char*, std::size_t>;

  static Error result(Error error) {
    if (error != kSuccess) last_error = error;
    return error;
  }

  Error next_call() { return fail_in_ > 0 && --fail_in_ == 0 ? result(failure_) : kSuccess; }

  bool on_device(const char* data, std::size_t bytes) const {
    auto block = blocks_.upper_bound(const_cast<char*>(data));
    if (block == blocks_.begin()) return false;
    --block;
    return data + bytes <= block->first + block->second;
  }

  void drop(Blocks::iterator block) {
    in_use_ -= block->second;
    ::operator delete (block->first, std::align_val_t{kPitchUnit});
    blocks_.erase(block);
  }

  std::mutex mutex_;
  Blocks blocks_;  // device memory: address and bytes
  std::size_t memory_ = std::size_t{1} << 30;
  std::size_t in_use_ = 0;
  std::uint64_t resets_ = 0;
  int fail_in_ = 0;  // calls until one fails; 0 for none
  Error failure_ = kSuccess;
};

SoftwareDevice& device() {
  static SoftwareDevice& instance = *new SoftwareDevice;
  return instance;
}

std::atomic<bool> device_enabled{false};

}  // namespace

Backend& software_backend() { return device(); }

}  // namespace nbx::cuda

namespace nbx::software_device {

void enable(bool on) {
  cuda::device().restart_counts();
  cuda::device_enabled = on;
}

bool enabled() { return cuda::device_enabled; }

void set_memory(std::size_t bytes) { cuda::device().set_memory(bytes); }

void fail_call(int n, cuda::Error error) { cuda::device().fail_call(n, error); }

std::uint64_t resets() { return cuda::device().resets(); }

std::size_t bytes_in_use() { return cuda::device().bytes_in_use(); }

}  // namespace nbx::software_device
