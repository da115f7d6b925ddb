// How many threads a loop is worth.
#pragma once

#include <algorithm>
#include <cmath>

#include <omp.h>

namespace nbx {

/// The number of threads that is fastest for loops over so many cells. A loop takes n t / N for the
/// work of N threads plus N b for the barrier at its end, which is least at N = sqrt(n t / b). The
/// ratio b / t is about 300 cells: a barrier takes some 0.3 us per thread, a cell 1 ns.
inline int threads_worth(double cells) {
  constexpr double barrier = 300;
  return static_cast<int>(std::clamp(std::sqrt(cells / barrier), 1.0, 4096.0));
}

/// Until it goes out of scope, parallel loops that this thread starts use at most `most` threads.
class ThreadLimit {
 public:
  explicit ThreadLimit(int most) { omp_set_num_threads(std::clamp(most, 1, before_)); }
  ~ThreadLimit() { omp_set_num_threads(before_); }
  ThreadLimit(const ThreadLimit&) = delete;
  ThreadLimit& operator=(const ThreadLimit&) = delete;

 private:
  const int before_ = omp_get_max_threads();
};

}  // namespace nbx
