#include "util/cuda_use_flags.h"

#include <map>
#include <mutex>
#include <vector>

#include "util/log.h"

namespace nbx {

namespace {

// Waiting for the device doesn't keep a processor core busy. Can be set on a fresh device only.
constexpr unsigned kBlockingSync = 4;

using Record = std::shared_ptr<CudaUseFlags>;

struct Registry {
  std::mutex mutex;
  std::map<std::thread::id, Record> records;
  std::vector<bool> device_ready;  // devices that were reset and set up
};

// Never destroyed: threads may outlive static objects.
Registry& registry() {
  static Registry& instance = *new Registry;
  return instance;
}

// A thread's own hold on its record. Ids of ended threads are used again, and a new thread must not
// inherit a selected device, so the record leaves the map together with the thread.
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
  const auto devices = static_cast<std::size_t>(count), selected = static_cast<std::size_t>(device);
  if (all.device_ready.size() < devices) all.device_ready.resize(devices, false);
  cuda_check(cuda::set_device(device));
  if (selected < devices && !all.device_ready[selected]) {
    cuda_check(cuda::device_reset());
    cuda_check(cuda::set_device_flags(kBlockingSync));
    all.device_ready[selected] = true;
  }
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
  // Clears the sticky error state, so that downloads after it can work.
  cuda_check_log_only(cuda::get_last_error());
  cuda_check_log_only(cuda::device_synchronize());
  cuda_check_log_only(cuda::get_last_error());
}

}  // namespace nbx
