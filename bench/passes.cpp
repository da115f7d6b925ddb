#include "bench/passes.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include <omp.h>

namespace nbx::bench {

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The best of several runs: what the memory can do undisturbed.
double measure_triad() {
  const std::ptrdiff_t n = std::ptrdiff_t{256} * 256 * 256;
  Field<float> a(256, 256, 256), x(256, 256, 256), y(256, 256, 256);
  float* pa = a.data();
  float *px = x.data(), *py = y.data();
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    pa[i] = 0;
    px[i] = 1;
    py[i] = 2;
  }
  const float s = 0.5f;
  double best = std::numeric_limits<double>::max();
  for (int run = 0; run < 20; ++run) {
    const double start = now();
#pragma omp parallel for simd schedule(static)
    for (std::ptrdiff_t i = 0; i < n; ++i) pa[i] = s * px[i] + py[i];
    benchmark::ClobberMemory();
    best = std::min(best, now() - start);
  }
  return best / static_cast<double>(n);
}

}  // namespace

double seconds_per_float() {
  static const double seconds = measure_triad();
  return seconds;
}

void report_iteration(benchmark::State& state, std::size_t cells, double seconds,
                      double bytes_per_cell) {
  const double n = cells;
  state.counters["passes"] = seconds / (n * seconds_per_float());
  state.counters["cells_per_s"] = n / seconds;
  if (bytes_per_cell > 0) state.counters["bytes_per_cell"] = bytes_per_cell;
}

Timer::Timer() : start_(now()) {}
double Timer::seconds() const { return now() - start_; }

}  // namespace nbx::bench
