// The unit of all benchmarks: a pass is the time of a[i] = s * x[i] + y[i] over the same number of
// floats, taken from a triad measured at 256^3 with all threads in the same run. Figures in passes
// hold from one machine to another; seconds don't.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>

#include <benchmark/benchmark.h>

#include "math/field.h"

namespace nbx::bench {

/// Seconds of the triad per float. Measured on first use.
double seconds_per_float();

/// Adds the counters of a benchmark that handles `cells` floats in an iteration of `seconds`:
/// `passes` and `cells_per_s`, and `bytes_per_cell` if above 0.
void report_iteration(benchmark::State& state, std::size_t cells, double seconds,
                      double bytes_per_cell = 0);

/// Wall time from construction on.
class Timer {
 public:
  Timer();
  double seconds() const;

 private:
  double start_;
};

/// Runs `body` once to warm up, then as often as the benchmark asks, and reports its best
/// iteration: the triad too is the best of its runs, so what else the machine does spoils neither.
template <class Body>
void measure(benchmark::State& state, std::size_t cells, Body&& body, double bytes_per_cell = 0) {
  body();
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    const Timer timer;
    body();
    benchmark::ClobberMemory();
    best = std::min(best, timer.seconds());
  }
  report_iteration(state, cells, best, bytes_per_cell);
}

inline void fill_random(Field<float>& f, unsigned seed, float lo = -1, float hi = 1) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> value(lo, hi);
  for (std::size_t i = 0; i < f.count(); ++i) f[i] = value(engine);
}

}  // namespace nbx::bench
