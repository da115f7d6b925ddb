// The threads that numeric code runs on.
#pragma once

namespace nbx {

/// Gives the process all processors of the machine, even if the host has pinned itself to some, and
/// OpenMP as many threads. Logs their number. Main thread, before numeric code runs. To use fewer,
/// run in a smaller cpuset or call omp_set_num_threads.
void set_up_thread_pool();

}  // namespace nbx
