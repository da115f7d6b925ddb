// A frame from its grids to a picture: prepares fields, lights the smoke by a sun that shines
// through it, and traces a ray for every pixel.
#include <cmath>

#include <omp.h>

#include "bench/passes.h"
#include "cache/grid_type.h"
#include "render/direct_light_field.h"
#include "render/prepare_volume.h"
#include "render/volume_renderer.h"

namespace nbx::bench {
namespace {

constexpr int kCells = 256, kWidth = 480, kHeight = 270;

// A sun above the smoke, dimmed by it.
class Sun final : public Lighting {
 public:
  explicit Sun(const VolumeRenderer& renderer) : renderer_(renderer) {}
  int lightCount() override { return 1; }
  Vec3d lightPosition(int) override { return {0, 1e9, 0}; }
  bool illuminate(int, const RenderVolume&, const Vec3d& point, Color& color, Vec3d& direction,
                  int) override {
    RayRecord ray;
    ray.origin = point;
    ray.direction = direction = {0, 1, 0};
    ray.mask = kShadowRay | kLightQueryRay;
    ray.seed = static_cast<std::uint64_t>(std::llround(point[0] * 1e3)) * 1000003 +
               static_cast<std::uint64_t>(std::llround(point[2] * 1e3));
    traceShadow(renderer_, ray);
    color = ray.transmittance;
    return true;
  }

 private:
  const VolumeRenderer& renderer_;
};

// A pillar of smoke that widens towards its top and fills a tenth of the grid.
FieldHandle plume() {
  const FieldHandle density = acquire_field({kCells, kCells, kCells});
#pragma omp parallel for
  for (int k = 0; k < kCells; ++k)
    for (int j = 0; j < kCells; ++j)
      for (int i = 0; i < kCells; ++i) {
        const double radius = 20 + 0.25 * j;
        const double r = std::hypot(i - kCells / 2.0, k - kCells / 2.0);
        const double swirl = 1 + 0.5 * std::sin(0.2 * i + 0.1 * j) * std::cos(0.25 * k);
        (*density)(i, j, k) = static_cast<float>(std::max(1 - r / radius, 0.0) * swirl);
      }
  return density;
}

void render_frame(benchmark::State& state) {
  SimFrame frame;
  frame.add(plume(), kGridDensity, {0, 0, 0}, {});
  VolumeParams params;
  params.smoke.channel = kGridDensity;
  params.smoke.curve.addPoint(0, 0);
  params.smoke.curve.addPoint(1, 1);
  params.smoke.ramp = std::make_shared<GradientRamp>(
      std::vector<GradientKnot>{{0, {1, 1, 1}}, {1, {0.8f, 0.8f, 0.8f}}});
  params.smoke.density = 5;

  double prepare = 1e9, light = 1e9, rays = 1e9;
  for (auto _ : state) {
    Timer timer;
    VolumeRenderer renderer;
    auto volume = std::make_shared<RenderVolume>();
    prepare_volume(*volume, frame, params);
    renderer.volumes = {volume};
    renderer.adaptive = false;
    prepare = std::min(prepare, timer.seconds());

    timer = Timer();
    Sun sun(renderer);
    volume->light_field = std::make_shared<DirectLightField>(DirectLightParams{});
    const bool whole =
        volume->light_field->prepare(sun, *volume, 0, [](int, int, int, int) { return false; });
    benchmark::DoNotOptimize(whole);
    light = std::min(light, timer.seconds());

    timer = Timer();
#pragma omp parallel for schedule(dynamic, 4)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        RayRecord ray;
        ray.lighting = &sun;
        ray.origin = {kCells / 2.0, kCells / 2.0, -2.0 * kCells};
        ray.direction = normalized(Vec3d(x - kWidth / 2.0, kHeight / 2.0 - y, kWidth * 1.1));
        ray.mask = kCameraRay;
        ray.seed = y * kWidth + x;
        traceVolumes(renderer, ray);
      }
    rays = std::min(rays, timer.seconds());
  }
  report_iteration(state, frame.grids.begin()->second.field->count(), prepare + light + rays);
  state.counters["prepare_s"] = prepare;
  state.counters["light_grid_s"] = light;
  state.counters["rays_s"] = rays;
}
BENCHMARK(render_frame)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
