#include "util/cuda_use_flags.h"

#include <iterator>
#include <map>
#include <mutex>
#include <vector>

#include "util/log.h"

namespace nbx {

namespace {

// A thread that waits for the device sleeps instead of spinning.
constexpr unsigned kBlockingSync = 4;

using Record = std::shared_ptr<CudaUseFlags>;

struct Registry {
  std::mutex mutex;
  std::map<std::thread::id, Record> records;
  std::vector<bool> device_ready;  // devices that have been set up
};

// Never destroyed, since threads may outlive static objects.
Registry& registry() {
  static Registry& instance = *new Registry;
  return instance;
}

// Removes a thread's record from the map when the thread ends: the system reuses ids, and a new
// thread must not inherit a selected device.
struct OwnRecord {
  const Record record = cuda_use_flags(std::this_thread::get_id());
  ~OwnRecord() {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    all.records.erase(std::this_thread::get_id());
  }
};

void select_device(int device) {
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  int count = 0;
  cuda_check(cuda::get_device_count(&count));
  if (std::ssize(all.device_ready) < count) all.device_ready.resize(count, false);
  const bool first = device < count && !all.device_ready[device];
  // Asked first, since selecting a device can create a context.
  bool in_use = false;
  if (first) cuda_check(cuda::context_active(&in_use, device));
  cuda_check(cuda::set_device(device));
  if (!first) return;
  if (!in_use) cuda_check(cuda::device_reset());
  cuda_check(cuda::set_device_flags(kBlockingSync));
  all.device_ready[device] = true;
}

}  // namespace

CudaUseFlags& cuda_use_flags() {
  thread_local const OwnRecord own;
  return *own.record;
}

std::shared_ptr<CudaUseFlags> cuda_use_flags(std::thread::id thread) {
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  Record& record = all.records[thread];
  if (!record) {
    LogMessage() << "init'ing cuda_use_flags for thread " << thread;
    record = std::make_shared<CudaUseFlags>();
  }
  return record;
}

void set_device(CudaUseFlags& record, int device) {
  if (device == record.device || device < 0) {
    record.device = device;
    return;
  }
  try {
    select_device(device);
    record.device = device;
  } catch (const CUDAException& exception) {
    record.device = -1;
    handle_cuda_exception(exception);
  }
}

void handle_cuda_exception(const CUDAException& exception) {
  LogMessage() << "CUDAException(" << exception.code() << ") in " << exception.file() << "("
               << exception.line() << "): " << cuda::get_error_string(exception.code());
  cuda_use_flags().use_gpu = false;
  // Clears the sticky error state, so that later downloads can work.
  cuda_check_log_only(cuda::get_last_error());
  cuda_check_log_only(cuda::device_synchronize());
  cuda_check_log_only(cuda::get_last_error());
}

}  // namespace nbx
