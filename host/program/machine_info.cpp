#include "host/program/machine_info.h"

#include <fstream>
#include <string>

#include <sys/utsname.h>

#include "host/interface/plugin.h"

namespace host {

BaseContainer ReadMachineInfo() {
  BaseContainer info;
  utsname system{};
  if (uname(&system) == 0) {
    info.SetString(kMachineOs, system.sysname);
    info.SetString(kMachineOsVersion, system.release);
  }
  // Lines have the form "model name\t: ...". We read the first processor only.
  std::ifstream processors("/proc/cpuinfo");
  for (std::string line; std::getline(processors, line) && !line.empty();) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string::npos) continue;
    const std::string value = line.substr(colon + 2);
    if (line.rfind("vendor_id", 0) == 0) info.SetString(kMachineCpuType, value);
    if (line.rfind("model name", 0) == 0) info.SetString(kMachineCpu, value);
    if (line.rfind("flags", 0) == 0) info.SetString(kMachineCpuFeatures, value);
  }
  return info;
}

}  // namespace host
