#include "C4D/start/device_report.h"

#include "util/cuda_host_util.h"
#include "util/format_size.h"
#include "util/log.h"

namespace nbx {

namespace {

void report_device(int index) {
  cuda::DeviceProperties device;
  cuda_check(cuda::get_device_properties(&device, index));
  LogMessage() << "CUDA Device " << index << " " << device.name << ", CC " << device.major << "."
               << device.minor << ", " << format_size(device.total_global_mem, 2) << ", "
               << format_size(device.shared_mem_per_block, 2) << " shared, "
               << device.multi_processor_count << " MPs" << (device.ecc ? ", ECC" : "")
               << (device.tcc ? ", TCC" : "");
}

}  // namespace

void report_devices() try {
  int count = 0;
  if (cuda::get_device_count(&count) != cuda::kSuccess || count == 0) {
    LogMessage() << "No CUDA Devices available";
    return;
  }
  for (int i = 0; i < count; ++i) report_device(i);
  std::size_t free_bytes = 0, total_bytes = 0;
  cuda_check(cuda::mem_get_info(&free_bytes, &total_bytes));
  LogMessage() << "CUDA memory free " << format_size(free_bytes, 2) << " total "
               << format_size(total_bytes, 2);
} catch (const CUDAException&) {
  // cuda_check has logged it; without the device everything runs on the CPU.
}

}  // namespace nbx
