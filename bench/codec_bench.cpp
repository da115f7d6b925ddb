// Coding of a density grid as a plume leaves it: most cells are exactly 0, the plume is smooth, and
// no two of its cells are equal. The predictive codec also runs on the plume alone and on noise,
// and where libfpzip is installed, beside it on the same fields, on one thread both: fpzip_per_ours
// is its time over ours.
#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/passes.h"
#include "cache/predictive_codec.h"
#include "cache/run_length_codec.h"
#ifdef NBX_HAVE_FPZIP
#include <fpzip.h>
#endif

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

// The fields of the predictive codec: the whole plume, a box of 128^3 inside of it without the
// empty cells around, and velocities of a smooth wave with noise in the last ten bits.
enum FieldKind { kPlume, kInside, kRough };
const char* const kFieldNames[] = {"plume", "inside", "rough"};

const Field<float>& test_field(FieldKind kind) {
  static Field<float> inside, rough;
  if (kind == kPlume) return plume();
  Field<float>& f = kind == kInside ? inside : rough;
  if (f.count() > 0) return f;
  constexpr int n = 128;
  f.resize(n, n, n);
  if (kind == kRough) bench::fill_random(f, 1);
  for (int k = 0; k < n; ++k)
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        if (kind == kInside)
          f(i, j, k) = plume()(64 + i, 128 + j, 64 + k);
        else
          f(i, j, k) = 2e-4f * f(i, j, k) + std::sin(0.1f * static_cast<float>(i + j + k));
  return f;
}

// libfpzip's times, measured within the loop of ours: neighbours on the machine slow both.
struct Fpzip {
  std::vector<char> bytes;
  std::size_t size = 0;
  double seconds = 0;

#ifdef NBX_HAVE_FPZIP
  static void describe(FPZ* fpz, const Field<float>& f) {
    fpz->type = FPZIP_TYPE_FLOAT;
    fpz->prec = 32;
    fpz->nx = f.nx();
    fpz->ny = f.ny();
    fpz->nz = f.nz();
    fpz->nf = 1;
  }
  void encode(const Field<float>& f) {
    bytes.resize(6 * f.count() + 4096);
    const bench::Timer timer;
    FPZ* const fpz = fpzip_write_to_buffer(bytes.data(), bytes.size());
    describe(fpz, f);
    size = fpzip_write(fpz, f.data());
    fpzip_write_close(fpz);
    seconds += timer.seconds();
  }
  void decode(Field<float>& f) {
    const bench::Timer timer;
    FPZ* const fpz = fpzip_read_from_buffer(bytes.data());
    describe(fpz, f);
    fpzip_read(fpz, f.data());
    fpzip_read_close(fpz);
    seconds += timer.seconds();
  }
#else
  void encode(const Field<float>&) {}
  void decode(Field<float>&) {}
#endif

  void report(benchmark::State& state, double ours) const {
    if (seconds > 0) state.counters["fpzip_per_ours"] = seconds / ours;
  }
};

void codec_encode(benchmark::State& state) {
  const Field<float>& f = test_field(static_cast<FieldKind>(state.range(0)));
  state.SetLabel(kFieldNames[state.range(0)]);
  ByteBuffer buffer;
  Fpzip theirs;
  std::size_t size = 0;
  double ours = 0;
  for (auto _ : state) {
    theirs.encode(f);
    const bench::Timer timer;
    size = predictive_encode(buffer, f.data(), f.dims());
    ours += timer.seconds();
    state.SetIterationTime(timer.seconds());
  }
  theirs.report(state, ours);
  bench::report(state, f.count(), ours, static_cast<double>(size) / static_cast<double>(f.count()));
}

void codec_decode(benchmark::State& state) {
  const Field<float>& f = test_field(static_cast<FieldKind>(state.range(0)));
  state.SetLabel(kFieldNames[state.range(0)]);
  ByteBuffer buffer;
  const std::size_t size = predictive_encode(buffer, f.data(), f.dims());
  char* const payload = buffer.grow(size, size + kPredictivePadding);
  std::fill_n(payload + size, kPredictivePadding, '\0');
  Fpzip theirs;
  theirs.encode(f);
  theirs.seconds = 0;
  Field<float> back(f.nx(), f.ny(), f.nz());
  double ours = 0;
  for (auto _ : state) {
    theirs.decode(back);
    const bench::Timer timer;
    if (!predictive_decode(back.data(), payload, size, back.dims()))
      state.SkipWithError("bad payload");
    ours += timer.seconds();
    state.SetIterationTime(timer.seconds());
  }
  if (!std::equal(f.data(), f.data() + f.count(), back.data())) state.SkipWithError("other cells");
  theirs.report(state, ours);
  bench::report(state, f.count(), ours, static_cast<double>(size) / static_cast<double>(f.count()));
}

BENCHMARK(codec_encode)->DenseRange(kPlume, kRough)->UseManualTime();
BENCHMARK(codec_decode)->DenseRange(kPlume, kRough)->UseManualTime();
BENCHMARK(rle_encode);
BENCHMARK(rle_decode);

}  // namespace
}  // namespace nbx
