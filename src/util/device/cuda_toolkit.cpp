// The real CUDA runtime. Compiled only where the build carries it.
#include <cuda.h>
#include <cuda_runtime_api.h>

#include "util/device/cuda_backend.h"

namespace nbx::cuda {

namespace {

cudaPitchedPtr pitched(const PitchedPtr& p) { return {p.data, p.pitch, p.xsize, p.ysize}; }

cudaExtent extent_of(const Extent& e) { return {e.width, e.height, e.depth}; }

cudaMemcpyKind kind_of(CopyKind kind) {
  switch (kind) {
    case CopyKind::kHostToDevice:
      return cudaMemcpyHostToDevice;
    case CopyKind::kDeviceToHost:
      return cudaMemcpyDeviceToHost;
    case CopyKind::kDeviceToDevice:
      break;
  }
  return cudaMemcpyDeviceToDevice;
}

template <class Call>
Call driver_call(const char* name) {
  void* call = nullptr;
#if CUDART_VERSION >= 12050
  if (cudaGetDriverEntryPointByVersion(name, &call, 12000, cudaEnableDefault) != cudaSuccess)
    return nullptr;
#else
  if (cudaGetDriverEntryPoint(name, &call, cudaEnableDefault) != cudaSuccess) return nullptr;
#endif
  return reinterpret_cast<Call>(call);
}

class Toolkit final : public Backend {
 public:
  // No device, or no driver at all, is a count of 0 and no error: everything then runs on the CPU.
  Error get_device_count(int* count) override {
    const cudaError_t error = cudaGetDeviceCount(count);
    if (error == cudaErrorNoDevice || error == cudaErrorInsufficientDriver) {
      *count = 0;
      cudaGetLastError();
      return kSuccess;
    }
    return error;
  }
  Error get_device_properties(DeviceProperties* properties, int device) override {
    cudaDeviceProp p{};
    const cudaError_t error = cudaGetDeviceProperties(&p, device);
    if (error == cudaSuccess)
      *properties = {.name = p.name,
                     .major = p.major,
                     .minor = p.minor,
                     .total_global_mem = p.totalGlobalMem,
                     .shared_mem_per_block = p.sharedMemPerBlock,
                     .multi_processor_count = p.multiProcessorCount,
                     .ecc = p.ECCEnabled != 0,
                     .tcc = p.tccDriver != 0};
    return error;
  }
  Error set_device(int device) override { return cudaSetDevice(device); }
  Error set_device_flags(unsigned flags) override { return cudaSetDeviceFlags(flags); }
  // The driver answers this: the runtime can't, and its own calls may create a context.
  Error context_active(bool* active, int device) override {
    *active = true;  // without an answer the device counts as used
    const auto get_state =
        driver_call<decltype(&cuDevicePrimaryCtxGetState)>("cuDevicePrimaryCtxGetState");
    if (!get_state) return cudaSuccess;
    unsigned flags = 0;
    int state = 0;
    if (get_state(device, &flags, &state) == CUDA_SUCCESS) *active = state != 0;
    return cudaSuccess;
  }
  Error device_reset() override { return cudaDeviceReset(); }
  Error device_synchronize() override { return cudaDeviceSynchronize(); }
  Error get_last_error() override { return cudaGetLastError(); }
  std::string get_error_string(Error error) override {
    return cudaGetErrorString(static_cast<cudaError_t>(error));
  }
  Error mem_get_info(std::size_t* free_bytes, std::size_t* total_bytes) override {
    return cudaMemGetInfo(free_bytes, total_bytes);
  }

  Error malloc(void** data, std::size_t bytes) override { return cudaMalloc(data, bytes); }
  Error malloc_3d(PitchedPtr* memory, Extent extent) override {
    cudaPitchedPtr p{};
    const cudaError_t error = cudaMalloc3D(&p, extent_of(extent));
    *memory = {p.ptr, p.pitch, p.xsize, p.ysize};
    return error;
  }
  Error free(void* data) override { return cudaFree(data); }
  Error memcpy(void* target, const void* source, std::size_t bytes, CopyKind kind) override {
    return cudaMemcpy(target, source, bytes, kind_of(kind));
  }
  Error memcpy_3d(const Copy3DParams& copy) override {
    cudaMemcpy3DParms p{};
    p.srcPtr = pitched(copy.source);
    p.srcPos = {copy.source_pos[0], copy.source_pos[1], copy.source_pos[2]};
    p.dstPtr = pitched(copy.target);
    p.dstPos = {copy.target_pos[0], copy.target_pos[1], copy.target_pos[2]};
    p.extent = extent_of(copy.extent);
    p.kind = kind_of(copy.kind);
    return cudaMemcpy3D(&p);
  }
  Error memset(void* data, int value, std::size_t bytes) override {
    return cudaMemset(data, value, bytes);
  }
  Error memset_3d(PitchedPtr memory, int value, Extent extent) override {
    return cudaMemset3DAsync(pitched(memory), value, extent_of(extent));
  }
};

}  // namespace

Backend& toolkit_backend() {
  static Backend& toolkit = *new Toolkit;
  return toolkit;
}

}  // namespace nbx::cuda
