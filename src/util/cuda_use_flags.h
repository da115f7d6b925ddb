// What a thread may use of the GPU, and the one rule by which every numeric call site chooses
// between GPU and CPU: try the GPU, on failure clear the flag, then test again and run the CPU.
#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "util/cuda_host_util.h"

namespace nbx {

/// One record per thread. Written by its own thread only; others may read it.
struct CudaUseFlags {
  std::atomic<bool> use_gpu{true};  // cleared when a GPU operation failed
  std::atomic<int> device{-1};      // the selected device, -1 for none

  /// The one test that all call sites make.
  bool on_gpu() const { return device >= 0 && use_gpu; }
};

/// The record of the calling thread, made on first use (one log line). A thread that never selects
/// a device runs everything on the CPU.
CudaUseFlags& cuda_use_flags();

/// The record of another thread, made if it has none. It outlives the thread in its handles, but a
/// later thread that happens to get the same id starts with a record of its own.
std::shared_ptr<CudaUseFlags> cuda_use_flags(std::thread::id thread);

/// Selects the device of the calling thread; negative takes it off the GPU and calls no runtime
/// function. A failure leaves the thread on the CPU.
void set_device(CudaUseFlags& record, int device);

/// The common catch clause: logs, clears `use_gpu` of the calling thread and the runtime's errors.
void handle_cuda_exception(const CUDAException& exception);

/// Marks an operation that has no kernel: it runs on the CPU wherever the thread is.
struct NoKernel {};
inline constexpr NoKernel no_kernel{};

/// Runs `gpu()` if the thread is on the GPU. If it isn't, or `gpu` throws a CUDAException (which
/// takes the thread off the GPU), runs `cpu()`. Bodies take the side of each MField that they need
/// themselves, so that data moves when and where it is first asked for.
template <class Gpu, class Cpu>
void try_gpu(Gpu&& gpu, Cpu&& cpu) {
  if (cuda_use_flags().on_gpu()) {
    try {
      std::forward<Gpu>(gpu)();
    } catch (const CUDAException& exception) {
      handle_cuda_exception(exception);
    }
  }
  if (!cuda_use_flags().on_gpu()) std::forward<Cpu>(cpu)();
}

template <class Cpu>
void try_gpu(NoKernel, Cpu&& cpu) {
  std::forward<Cpu>(cpu)();
}

}  // namespace nbx
