#include "util/processor_wait.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <unistd.h>

namespace nbx {

// The kernel counts, for each thread, the nanoseconds on a processor and those in a queue for one.
std::optional<double> processor_wait() {
  const std::string own = std::to_string(gettid());
  double running = 0, waiting = 0;
  std::error_code error;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
    std::ifstream file(thread.path() / "schedstat");  // can't be read if the thread has just ended
    double on_processor = 0, in_queue = 0;
    if (!(file >> on_processor >> in_queue)) continue;
    running += on_processor;
    if (thread.path().filename() != own) waiting += in_queue;
  }
  if (running == 0) return std::nullopt;
  return waiting / 1e9;
}

}  // namespace nbx
