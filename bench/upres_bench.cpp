// A frame of an up-resolution run of plain smoke, at 128^3 in the end.
#include <cstdlib>
#include <filesystem>

#include "bench/passes.h"
#include "bench/smoke_scene.h"
#include "cache/cache_registry.h"

namespace nbx::bench {
namespace {

constexpr int kFrames = 20;

/// A folder that vanishes.
struct Folder {
  Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "nbx_bench_XXXXXX").string();
    if (mkdtemp(pattern.data())) path = pattern;
  }
  ~Folder() { std::filesystem::remove_all(path); }
  std::string path;
};

void upres_frame(benchmark::State& state) {
  const int factor = static_cast<int>(state.range(0));
  const Folder folder;
  const std::shared_ptr<BFS> cache = getCache(folder.path);
  if (!cache) return state.SkipWithError("there is no folder for the coarse run");
  SmokeRun(kFrames, factor, cache);

  field_pool().release_unused();
  const std::uint64_t before = field_bytes();
  MovingSource scene;
  Simulation3D sim;
  sim.params.simulated_channels = {kDensity, kTemperature};
  sim.params.upres = true;
  sim.params.upres_factor = factor;
  sim.source_cache = cache;
  sim.clock.frame_duration = 0.04;
  sim.clock.sim_time = {{1, 25}, {1, 25}};
  FrameTime time = sim.clock.sim_time;
  sim.init_state(scene);
  const std::size_t cells = std::size_t{kSmokeCells} * kSmokeCells * kSmokeCells;
  for (int i = 1; i < kFrames; ++i) sim.update(scene, time, nullptr);
  measure(state, cells, [&] {
    FrameTime last = {{kFrames - 1, 25}, {1, 25}};
    sim.update(scene, last, nullptr);
  });
  state.counters["bytes_per_cell"] =
      static_cast<double>(field_bytes() - before) / static_cast<double>(cells);
}
BENCHMARK(upres_frame)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
