// Wall time for statistics.
#pragma once

#include <chrono>

namespace nbx {

/// Seconds since construction or the last lap, by the monotonic clock.
class Stopwatch {
 public:
  double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
  /// The seconds so far; restarts the watch.
  double lap() {
    const Clock::time_point now = Clock::now();
    const double passed = std::chrono::duration<double>(now - start_).count();
    start_ = now;
    return passed;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_ = Clock::now();
};

}  // namespace nbx
