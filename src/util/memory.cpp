#include "util/memory.h"

#include <fstream>

#include <unistd.h>

namespace nbx {

std::uint64_t physical_memory() {
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
  return pages > 0 && page > 0 ? std::uint64_t{1} * pages * page : 0;
}

std::uint64_t resident_memory() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t size = 0, resident = 0;
  if (!(statm >> size >> resident)) return 0;
  return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace nbx
