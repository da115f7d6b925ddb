// Light in smoke.
#include "bench/passes.h"
#include "render/direct_light_field.h"
#include "render/light/sweep_grid.h"
#include "render/render_volume.h"

namespace nbx::bench {
namespace {

// One sweep with nine directions per face through smoke that fills the grid.
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
  state.counters["cell_directions_per_s"] = 54.0 * source.count() / best;
}
// A lamp without cost, so that the benchmark measures the cache.
class Lamp final : public Lighting {
 public:
  int lightCount() override { return 1; }
  Vec3d lightPosition(int) override { return {0, 0, 0}; }
  bool illuminate(int, const RenderVolume&, const Vec3d&, Color& color, Vec3d&, int) override {
    color = {1, 1, 1};
    return true;
  }
};

// Look-ups of cached light along rays, on one thread.
void light_direct(benchmark::State& state) {
  RenderVolume volume;
  volume.dims = {128, 128, 128};
  volume.voxelToWorld = Affine3d::identity();
  Lamp lamp;
  DirectLightField field({});
  if (!field.prepare(lamp, volume, 1, [](int, int, int, int) { return false; })) return;
  constexpr int rays = 4096;
  std::mt19937 engine(1);
  std::uniform_real_distribution<float> place(1, 100);
  std::vector<Points> blocks(rays);
  for (Points& points : blocks) {
    points.n = kBlock;
    const float x = place(engine), y = place(engine), z = place(engine);
    for (int i = 0; i < kBlock; ++i) {
      points.x[i] = x + 0.25f * i;
      points.y[i] = y;
      points.z[i] = z;
    }
  }
  RayRecord ray;
  Colors light;
  measure(state, std::size_t{rays} * kBlock, [&] {
    for (const Points& points : blocks) {
      field.query(light, lamp, ray, points);
      benchmark::DoNotOptimize(light);
    }
  });
}
BENCHMARK(light_direct)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(light_sweep)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
