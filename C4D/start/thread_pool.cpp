#include "C4D/start/thread_pool.h"

#include <cstring>

#include <omp.h>
#include <sched.h>

#include "util/log.h"

namespace nbx {

namespace {

void widen_affinity() {
  cpu_set_t before, all;
  std::memset(&all, 0xff, sizeof all);  // the kernel keeps those that the process may use
  if (sched_getaffinity(0, sizeof before, &before) != 0 ||
      sched_setaffinity(0, sizeof all, &all) != 0)
    LogMessage() << "Failed to get process affinity";
}

}  // namespace

void set_up_thread_pool() {
  widen_affinity();
  const int processors = omp_get_num_procs();
  LogMessage() << processors << " omp procs";
  omp_set_num_threads(processors);
}

}  // namespace nbx
