// Light in smoke.
#include "bench/passes.h"
#include "render/sweep_grid.h"

namespace nbx::bench {
namespace {

// One sweep with nine directions a face through smoke that fills the grid.
void light_sweep(benchmark::State& state) {
  const Vec3i dims{96, 96, 96};
  SweepMedium medium;
  medium.dims = dims;
  medium.cells.assign(Field3(dims, 0).count(), {2.0f, {1.9f, 1.8f, 1.7f}});
  const Field3 source(dims, 1.0f);
  Field3 gathered(dims, 0.0f);
  SweepGrid grid(dims, 3, 0.02);
  double best = 1e9;
  for (auto _ : state) {
    const Timer timer;
    const bool whole = grid.sweep(gathered, source, medium, 0, [](int, int) { return true; });
    benchmark::DoNotOptimize(whole);
    best = std::min(best, timer.seconds());
  }
  report_iteration(state, source.count(), best);
  state.counters["cell_directions_per_s"] = 54.0 * static_cast<double>(source.count()) / best;
}
BENCHMARK(light_sweep)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
