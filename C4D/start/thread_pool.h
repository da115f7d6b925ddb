// The threads that numeric code runs on.
#pragma once

namespace nbx {

/// Gives the process all processors of the machine, also where a host has pinned itself to some of
/// them, and lets OpenMP use as many threads. Logs their number. Main thread, before numeric code
/// runs. To run on fewer: a smaller cpuset, or fewer threads from omp_set_num_threads.
void set_up_thread_pool();

}  // namespace nbx
