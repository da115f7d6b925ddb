// Whole frames of plain smoke at 128^3, projected to the tolerance.
#include "bench/passes.h"
#include "bench/smoke_scene.h"

namespace nbx::bench {
namespace {

void smoke_frame(benchmark::State& state) {
  field_pool().release_unused();
  const std::uint64_t before = field_bytes();
  SmokeRun run(20);
  Simulation3D& sim = run.sim;

  const std::size_t cells = std::size_t{kSmokeCells} * kSmokeCells * kSmokeCells;
  int cycles = 0, frames = 0;
  float residual = 0;
  measure(state, cells, [&] {
    sim.update(run.scene, run.time, nullptr);
    cycles += sim.pressure().last_solve().cycles;
    residual = std::max(residual, sim.pressure().last_solve().residual);
    ++frames;
  });
  state.counters["residual"] = static_cast<double>(residual);
  state.counters["bytes_per_cell"] =
      static_cast<double>(field_bytes() - before) / static_cast<double>(cells);
  state.counters["cycles"] = static_cast<double>(cycles) / frames;
}
BENCHMARK(smoke_frame)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
