// Whether a thread may use the GPU, and try_gpu(), the one rule by which every numeric operation
// chooses between GPU and CPU: try the GPU; if that fails, clear the flag and run on the CPU.
//
// An operation may fail half-way on the device and is then repeated on the CPU, so its operands
// must still hold what they held before. Therefore a device body never works in place:
//
//   - It takes its sources by MField::read_gpu(), which gives no way to write.
//   - It takes a destination that isn't a source by MField::overwrite_gpu().
//   - If a destination is also a source, it writes to a fresh MField on the GPU and calls swap() as
//     its last step, when nothing can fail any more. on_gpu() in math/mfield.h does this.
//   - Anything else that it changes (a stale flag, a counter) it changes after that.
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

/// The record of the calling thread, made on first use (one log line). A thread that selects no
/// device runs everything on the CPU.
CudaUseFlags& cuda_use_flags();

/// The record of another thread, made if it has none. A handle keeps the record after the thread
/// has ended. A later thread with the same id gets a new record.
std::shared_ptr<CudaUseFlags> cuda_use_flags(std::thread::id thread);

/// Selects the device of the calling thread. A negative number takes the thread off the GPU and
/// calls no runtime function. A failure leaves the thread on the CPU.
///
/// The first call for a device in the process resets the device and makes threads that wait for it
/// sleep instead of spin. A device on which the process already has a context isn't reset: a
/// reset would free memory that other code allocated.
void set_device(CudaUseFlags& record, int device);

/// The common catch clause: logs, clears `use_gpu` of the calling thread and the runtime's errors.
void handle_cuda_exception(const CUDAException& exception);

/// Marks an operation that has no kernel: it runs on the CPU wherever the thread is.
struct NoKernel {};
inline constexpr NoKernel no_kernel{};

/// Runs `gpu()` if the thread is on the GPU. If it isn't, or if `gpu` throws a CUDAException (which
/// takes the thread off the GPU), runs `cpu()`. `gpu` must keep the rules at the top of this file.
/// Each body asks its MFields for the side that it needs, so that data moves only on demand.
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
