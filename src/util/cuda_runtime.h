// The CUDA runtime calls that Nimbrix uses, with two implementations: the real toolkit, if the
// build has it, and a software device that keeps device memory on the heap. With no device the
// count is 0 and everything runs on the CPU. Names, arguments and results are those of the runtime;
// a call returns 0 for success or the runtime's error number. `cuda_check` (cuda_host_util.h) turns
// results into exceptions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace nbx::cuda {

using Error = int;  // cudaError_t

inline constexpr Error kSuccess = 0;
inline constexpr Error kErrorInvalidValue = 1;
inline constexpr Error kErrorMemoryAllocation = 2;
inline constexpr Error kErrorNoDevice = 100;
inline constexpr Error kErrorInvalidDevice = 101;

/// Device memory in rows: row (j, k) starts at data + (k * ysize + j) * pitch bytes.
struct PitchedPtr {
  void* data = nullptr;
  std::size_t pitch = 0;  // bytes from row to row
  std::size_t xsize = 0;  // bytes of a row in use
  std::size_t ysize = 0;  // rows of a plane
};

struct Extent {
  std::size_t width = 0;  // bytes
  std::size_t height = 0;
  std::size_t depth = 0;
  bool operator==(const Extent&) const = default;
};

enum class CopyKind { kHostToDevice = 1, kDeviceToHost = 2, kDeviceToDevice = 3 };

/// A 3-D copy between pitched memories, positions in bytes, rows and planes.
struct Copy3DParams {
  PitchedPtr source, target;
  std::size_t source_pos[3] = {0, 0, 0};
  std::size_t target_pos[3] = {0, 0, 0};
  Extent extent;
  CopyKind kind = CopyKind::kHostToDevice;
};

struct DeviceProperties {
  std::string name;
  int major = 0, minor = 0;              // compute capability
  std::size_t total_global_mem = 0;      // bytes
  std::size_t shared_mem_per_block = 0;  // bytes
  int multi_processor_count = 0;
  bool ecc = false;  // memory with error correction
  bool tcc = false;  // a driver for computing only
};

// Devices.
/// Gives 0 without an error on a machine that has no device or no driver.
Error get_device_count(int* count);
Error get_device_properties(DeviceProperties* properties, int device);
Error set_device(int device);
Error set_device_flags(unsigned flags);
/// Whether the process has a context on the device, even one that other code created. Creates none.
Error context_active(bool* active, int device);
Error device_reset();
Error device_synchronize();
/// The last error of a call on this thread, which it clears.
Error get_last_error();
std::string get_error_string(Error error);
Error mem_get_info(std::size_t* free_bytes, std::size_t* total_bytes);

// Memory.
Error malloc(void** data, std::size_t bytes);
Error malloc_3d(PitchedPtr* memory, Extent extent);
Error free(void* data);
Error memcpy(void* target, const void* source, std::size_t bytes, CopyKind kind);
Error memcpy_3d(const Copy3DParams& copy);
Error memset(void* data, int value, std::size_t bytes);
Error memset_3d(PitchedPtr memory, int value, Extent extent);

}  // namespace nbx::cuda
