#include "C4D/start/machine_report.h"

#include "C4D/start/device_report.h"
#include "C4D/start/thread_pool.h"
#include "util/log.h"
#include "util/memory.h"

namespace nbx {

void print_banner(host::HostServices& services) {
  const std::string dashes(80, '-');
  const std::string banner = "Nimbrix v" NBX_VERSION " Rev " NBX_REVISION " " +
                             std::to_string(8 * sizeof(void*)) + "Bit " NBX_BUILD_DATE;
  const char* const notice = "Simulates smoke and fire, and renders them as volumes";
  for (const std::string& line : {dashes, banner, std::string(notice), dashes}) {
    services.GePrint(line);
    LogMessage() << line;
  }
}

void report_machine(host::HostServices& services, std::int32_t api_version) {
  LogMessage() << (services.IsRenderMode() ? "Running in render mode" : "Running in GUI mode");
  LogMessage() << "CINEMA 4D Version " << services.GetHostVersion() << " API " << api_version;

  const host::BaseContainer machine = services.GetMachineInfo();
  LogMessage() << machine.GetString(host::kMachineOs, "unknown OS") << " "
               << machine.GetString(host::kMachineOsVersion, "unknown OS version");
  LogMessage() << machine.GetString(host::kMachineCpu, "unknown CPU") << " "
               << machine.GetString(host::kMachineCpuType, "unknown CPU type");
  LogMessage() << machine.GetString(host::kMachineCpuFeatures, "unknown CPU features");
  set_up_thread_pool();
  if (const std::uint64_t bytes = physical_memory(); bytes > 0)
    LogMessage() << "Phys. mem: " << (bytes >> 20) << "MB";
  LogMessage() << machine.GetString(host::kMachineGraphics, "unknown") << " OpenGL "
               << machine.GetString(host::kMachineGraphicsVersion, "unknown") << " "
               << machine.GetString(host::kMachineGraphicsCard, "unknown") << " "
               << machine.GetString(host::kMachineGraphicsMemory, "unknown");
  LogMessage() << "C4D: " << machine.GetString(host::kMachinePlugins, "unknown plug-ins");
  report_devices();
  LogMessage() << "---";
}

}  // namespace nbx
