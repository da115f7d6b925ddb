// Coding of a density grid as a plume leaves it: most cells are exactly 0, the plume is smooth, and
// no two of its cells are equal.
#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/passes.h"
#include "cache/run_length_codec.h"

namespace nbx {
namespace {

constexpr int kCells = 256;

// A cone that widens upwards along y, with a waving axis and a hard edge. It fills a seventh of the
// box.
const Field<float>& plume() {
  static Field<float> f;
  if (f.count() > 0) return f;
  f.resize(kCells, kCells, kCells);
  for (int k = 0; k < kCells; ++k)
    for (int j = 0; j < kCells; ++j)
      for (int i = 0; i < kCells; ++i) {
        const double y = static_cast<double>(j) / kCells, radius = 0.1 + 0.25 * y;
        const double x = static_cast<double>(i) / kCells - 0.5 - 0.05 * std::sin(9 * y);
        const double z = static_cast<double>(k) / kCells - 0.5 - 0.05 * std::cos(7 * y);
        const double d = 1 - (x * x + z * z) / (radius * radius);
        f(i, j, k) = static_cast<float>(std::max(d, 0.0) * (1 + 0.3 * std::sin(40 * x + 30 * y)));
      }
  return f;
}

struct Coded {
  std::vector<char> bytes = std::vector<char>(rle_bound(plume().count()));
  std::size_t size = rle_encode(bytes.data(), plume().data(), plume().count());
};

void report_codec(benchmark::State& state, const Coded& coded, double seconds) {
  const double cells = static_cast<double>(plume().count());
  bench::report(state, plume().count(), seconds, static_cast<double>(coded.size) / cells);
}

void rle_encode(benchmark::State& state) {
  Coded coded;
  bench::Timer timer;
  for (auto _ : state) {
    nbx::rle_encode(coded.bytes.data(), plume().data(), plume().count());
    benchmark::ClobberMemory();
  }
  report_codec(state, coded, timer.seconds());
}

// With the check of the payload that comes before.
void rle_decode(benchmark::State& state) {
  const Coded coded;
  Field<float> f(kCells, kCells, kCells);
  bench::Timer timer;
  for (auto _ : state) {
    if (!rle_fits(coded.bytes.data(), coded.size, f.count())) state.SkipWithError("bad payload");
    nbx::rle_decode(f.data(), coded.bytes.data(), coded.size);
    benchmark::ClobberMemory();
  }
  report_codec(state, coded, timer.seconds());
}

BENCHMARK(rle_encode);
BENCHMARK(rle_decode);

}  // namespace
}  // namespace nbx
