#include "util/cuda_runtime.h"

#include "util/device/cuda_backend.h"
#include "util/device/software_device.h"

namespace nbx::cuda {

namespace {

Backend& backend() {
  if (software_device::enabled()) return software_backend();
#ifdef NBX_HAVE_CUDA
  return toolkit_backend();
#else
  static Backend& none = *new Backend;
  return none;
#endif
}

}  // namespace

std::string Backend::get_error_string(Error error) {
  switch (error) {
    case kSuccess:
      return "success";
    case kErrorInvalidValue:
      return "invalid value";
    case kErrorMemoryAllocation:
      return "out of device memory";
    case kErrorNoDevice:
      return "no CUDA device";
    case kErrorInvalidDevice:
      return "no such device";
    default:
      return "error " + std::to_string(error);
  }
}

Error get_device_count(int* count) { return backend().get_device_count(count); }
Error get_device_properties(DeviceProperties* properties, int device) {
  return backend().get_device_properties(properties, device);
}
Error set_device(int device) { return backend().set_device(device); }
Error set_device_flags(unsigned flags) { return backend().set_device_flags(flags); }
Error context_active(bool* active, int device) { return backend().context_active(active, device); }
Error device_reset() { return backend().device_reset(); }
Error device_synchronize() { return backend().device_synchronize(); }
Error get_last_error() { return backend().get_last_error(); }
std::string get_error_string(Error error) { return backend().get_error_string(error); }
Error mem_get_info(std::size_t* free_bytes, std::size_t* total_bytes) {
  return backend().mem_get_info(free_bytes, total_bytes);
}

Error malloc(void** data, std::size_t bytes) { return backend().malloc(data, bytes); }
Error malloc_3d(PitchedPtr* memory, Extent extent) { return backend().malloc_3d(memory, extent); }
Error free(void* data) { return backend().free(data); }
Error memcpy(void* target, const void* source, std::size_t bytes, CopyKind kind) {
  return backend().memcpy(target, source, bytes, kind);
}
Error memcpy_3d(const Copy3DParams& copy) { return backend().memcpy_3d(copy); }
Error memset(void* data, int value, std::size_t bytes) {
  return backend().memset(data, value, bytes);
}
Error memset_3d(PitchedPtr memory, int value, Extent extent) {
  return backend().memset_3d(memory, value, extent);
}

}  // namespace nbx::cuda
