#include "C4D/machine_report.h"

#include <omp.h>

#include "C4D/workspace.h"
#include "util/cuda_runtime.h"
#include "util/log.h"

namespace nbx {

namespace {

void report_devices() {
  int count = 0;
  if (cuda::get_device_count(&count) != cuda::kSuccess) count = 0;
  if (count == 0)
    LogMessage() << "No CUDA Devices available";
  else
    LogMessage() << count << " CUDA devices";
}

}  // namespace

void report_machine(host::HostServices& services, std::int32_t api_version) {
  const std::string dashes(80, '-');
  LogMessage() << dashes;
  LogMessage() << "Nimbrix v" << NBX_VERSION << " " << 8 * sizeof(void*) << "Bit";
  LogMessage() << dashes;
  LogMessage() << (services.IsRenderMode() ? "Running in render mode" : "Running in GUI mode");
  LogMessage() << "CINEMA 4D Version " << services.GetHostVersion() << " API " << api_version;

  const host::BaseContainer machine = services.GetMachineInfo();
  LogMessage() << machine.GetString(host::kMachineOs, "unknown OS") << " "
               << machine.GetString(host::kMachineOsVersion, "unknown OS version");
  LogMessage() << machine.GetString(host::kMachineCpu, "unknown CPU") << " "
               << machine.GetString(host::kMachineCpuType, "unknown CPU type");
  LogMessage() << machine.GetString(host::kMachineCpuFeatures, "unknown CPU features");
  LogMessage() << omp_get_num_procs() << " omp procs";
  if (const std::uint64_t bytes = physical_memory(); bytes > 0)
    LogMessage() << "Phys. mem: " << (bytes >> 20) << "MB";
  report_devices();
  LogMessage() << "---";
}

}  // namespace nbx
