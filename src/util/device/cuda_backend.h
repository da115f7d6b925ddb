// What implements cuda_runtime.h. The base class is a machine without a device; the toolkit and the
// software device override it.
#pragma once

#include "util/cuda_runtime.h"

namespace nbx::cuda {

class Backend {
 public:
  virtual ~Backend() = default;

  virtual Error get_device_count(int* count) {
    *count = 0;
    return kSuccess;
  }
  virtual Error get_device_properties(DeviceProperties*, int) { return kErrorNoDevice; }
  virtual Error set_device(int) { return kErrorNoDevice; }
  virtual Error set_device_flags(unsigned) { return kErrorNoDevice; }
  virtual Error context_active(bool*, int) { return kErrorNoDevice; }
  virtual Error device_reset() { return kErrorNoDevice; }
  virtual Error device_synchronize() { return kErrorNoDevice; }
  virtual Error get_last_error() { return kSuccess; }
  virtual std::string get_error_string(Error error);
  virtual Error mem_get_info(std::size_t*, std::size_t*) { return kErrorNoDevice; }

  virtual Error malloc(void**, std::size_t) { return kErrorNoDevice; }
  virtual Error malloc_3d(PitchedPtr*, Extent) { return kErrorNoDevice; }
  virtual Error free(void*) { return kErrorNoDevice; }
  virtual Error memcpy(void*, const void*, std::size_t, CopyKind) { return kErrorNoDevice; }
  virtual Error memcpy_3d(const Copy3DParams&) { return kErrorNoDevice; }
  virtual Error memset(void*, int, std::size_t) { return kErrorNoDevice; }
  virtual Error memset_3d(PitchedPtr, int, Extent) { return kErrorNoDevice; }
};

Backend& software_backend();
#ifdef NBX_HAVE_CUDA
Backend& toolkit_backend();
#endif

}  // namespace nbx::cuda
