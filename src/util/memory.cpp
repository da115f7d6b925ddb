#include "util/memory.h"

#include <fstream>
#include <string>

#include <unistd.h>

namespace nbx {

std::uint64_t physical_memory() {
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
  return pages > 0 && page > 0 ? std::uint64_t{1} * pages * page : 0;
}

std::uint64_t available_memory() {
  std::ifstream meminfo("/proc/meminfo");
  std::string name, unit;
  for (std::uint64_t kilobytes = 0; meminfo >> name >> kilobytes; std::getline(meminfo, unit))
    if (name == "MemAvailable:") return kilobytes * 1024;
  return 0;
}

std::uint64_t resident_memory() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t size = 0, resident = 0;
  if (!(statm >> size >> resident)) return 0;
  return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace nbx
