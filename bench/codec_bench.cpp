// Coding of the grids of a smoke frame, one thread. Where libfpzip is installed, it codes the same
// grids in the same loop: fpzip_per_ours is its best time over ours.
#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "bench/passes.h"
#include "bench/smoke_scene.h"
#include "cache/codecs/predictive_codec.h"
#include "cache/codecs/run_length_codec.h"
#include "cache/grid_type.h"
#ifdef NBX_HAVE_FPZIP
#include <fpzip.h>
#endif

namespace nbx {
namespace {

// The grid of a type as the frame's file has it, after a second of smoke.
const Field<float>& grid(benchmark::State& state) {
  static SimFrame frame;
  if (frame.grids.empty()) {
    bench::SmokeRun run(25);
    run.sim.fill_frame(frame, {kVelocity, kDensity, kTemperature}, run.time);
  }
  const int type = static_cast<int>(state.range(0));
  state.SetLabel(grid_type_name(type));
  return *frame.grid(type);
}

// libfpzip's best times, measured within the loop of ours: neighbors on the machine slow both.
struct Fpzip {
  std::vector<char> bytes;
  std::size_t size = 0;
  double seconds = std::numeric_limits<double>::max();

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
    seconds = std::min(seconds, timer.seconds());
  }
  void decode(Field<float>& f) {
    const bench::Timer timer;
    FPZ* const fpz = fpzip_read_from_buffer(bytes.data());
    describe(fpz, f);
    fpzip_read(fpz, f.data());
    fpzip_read_close(fpz);
    seconds = std::min(seconds, timer.seconds());
  }
#else
  void encode(const Field<float>&) {}
  void decode(Field<float>&) {}
#endif

  void report(benchmark::State& state, double ours) const {
    if (size > 0) state.counters["fpzip_per_ours"] = seconds / ours;
  }
};

void report(benchmark::State& state, const Field<float>& f, double seconds, std::size_t size) {
  const auto cells = static_cast<double>(f.count());
  bench::report_iteration(state, f.count(), seconds, static_cast<double>(size) / cells);
}

bool same_bits(const Field<float>& a, const Field<float>& b) {
  return std::memcmp(a.data(), b.data(), a.count() * sizeof(float)) == 0;
}

void codec_encode(benchmark::State& state) {
  const Field<float>& f = grid(state);
  ByteBuffer buffer;
  Fpzip theirs;
  std::size_t size = 0;
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    theirs.encode(f);
    const bench::Timer timer;
    size = predictive_encode(buffer, f.data(), f.dims());
    const double seconds = timer.seconds();
    best = std::min(best, seconds);
    state.SetIterationTime(seconds);
  }
  theirs.report(state, best);
  report(state, f, best, size);
}

void codec_decode(benchmark::State& state) {
  const Field<float>& f = grid(state);
  ByteBuffer buffer;
  const std::size_t size = predictive_encode(buffer, f.data(), f.dims());
  char* const payload = buffer.grow(size, size + kPredictivePadding);
  std::fill_n(payload + size, kPredictivePadding, '\0');
  Fpzip theirs;
  theirs.encode(f);
  theirs.seconds = std::numeric_limits<double>::max();
  Field<float> back(f.nx(), f.ny(), f.nz()), their_back(f.nx(), f.ny(), f.nz());
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    theirs.decode(their_back);
    const bench::Timer timer;
    if (!predictive_decode(back.data(), payload, size, back.dims()))
      state.SkipWithError("bad payload");
    const double seconds = timer.seconds();
    best = std::min(best, seconds);
    state.SetIterationTime(seconds);
  }
  if (!same_bits(f, back)) state.SkipWithError("other cells");
  if (theirs.size > 0 && !same_bits(f, their_back)) state.SkipWithError("libfpzip's cells differ");
  theirs.report(state, best);
  report(state, f, best, size);
}

void codec_rle_encode(benchmark::State& state) {
  const Field<float>& f = grid(state);
  std::vector<char> bytes(rle_bound(f.count()));
  const std::size_t size = rle_encode(bytes.data(), f.data(), f.count());
  const double per_cell = static_cast<double>(size) / static_cast<double>(f.count());
  bench::measure(
      state, f.count(), [&] { rle_encode(bytes.data(), f.data(), f.count()); }, per_cell);
}

// With the check of the payload that comes before.
void codec_rle_decode(benchmark::State& state) {
  const Field<float>& f = grid(state);
  std::vector<char> bytes(rle_bound(f.count()));
  const std::size_t size = rle_encode(bytes.data(), f.data(), f.count());
  Field<float> back(f.nx(), f.ny(), f.nz());
  bench::measure(state, f.count(), [&] {
    if (!rle_fits(bytes.data(), size, f.count())) state.SkipWithError("bad payload");
    rle_decode(back.data(), bytes.data(), size);
  });
}

void channels(benchmark::internal::Benchmark* b) {
  for (const int type :
       {kGridDensity, kGridTemperature, kGridVelocityX, kGridVelocityY, kGridVelocityZ})
    b->Arg(type);
}
BENCHMARK(codec_encode)->Apply(channels)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(codec_decode)->Apply(channels)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(codec_rle_encode)->Arg(kGridDensity)->Unit(benchmark::kMillisecond);
BENCHMARK(codec_rle_decode)->Arg(kGridDensity)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx
