// Ray marching through smoke. A sample is a point at which one channel is shaded and lit by direct
// light from a cache.
#include <cmath>
#include <ctime>

#include <omp.h>

#include "bench/passes.h"
#include "cache/grid_type.h"
#include "render/direct_light_field.h"
#include "render/march/clip_ray.h"
#include "render/prepare_volume.h"
#include "render/proximity.h"
#include "render/volume_renderer.h"

namespace nbx::bench {

namespace {

constexpr int kPixels = 192;

// Smoke in a cube of n cells: a cloud of the given radius in its middle, with some structure. It is
// so thin that every ray passes through it. A voxel is one unit long.
class Smoke {
 public:
  Smoke(int n, double radius, Filter filter, double noise = 0) {
    const FieldHandle field = acquire_field({n, n, n});
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
          const double r = length(Vec3d(i, j, k) - 0.5 * Vec3d(n, n, n));
          (*field)(i, j, k) =
              r < radius ? static_cast<float>(1 + 0.5 * std::sin(0.3 * i) * std::cos(0.2 * j)) : 0;
        }
    frame_.add(field, kGridDensity, {0, 0, 0}, {});

    params_.smoke.channel = kGridDensity;
    params_.smoke.curve.addPoint(0, 0);
    params_.smoke.curve.addPoint(1, 1);
    params_.smoke.ramp = std::make_shared<GradientRamp>(
        std::vector<GradientKnot>{{0, {1, 0.9f, 0.8f}}, {1, {0.5f, 0.6f, 0.7f}}});
    params_.smoke.density = 2;
    params_.smoke.noise = {.percent = noise, .scale_a = 2, .scale_b = 8};
    params_.filter = filter;
    prepare_volume(*volume_, frame_, params_);
    volume_->light_field = std::make_shared<DirectLightField>(DirectLightParams{});
    const bool whole = volume_->light_field->prepare(light_, *volume_, omp_get_max_threads(),
                                                     [](int, int, int, int) { return false; });
    benchmark::DoNotOptimize(whole);
    renderer_.volumes = {volume_};
    renderer_.adaptive = false;
  }

  /// A picture of the cloud from the front, from so far away that all rays are nearly parallel.
  template <class Trace>
  void picture(double width, Trace trace) {
#pragma omp parallel for schedule(dynamic, 4)
    for (int y = 0; y < kPixels; ++y)
      for (int x = 0; x < kPixels; ++x) {
        RayRecord ray = this->ray(width, x, y);
        trace(ray);
      }
  }

  RayRecord ray(double width, int x, int y) {
    const double middle = volume_->dims[0] * 0.5, eye = 1000;
    const auto place = [&](int p) { return (p + 0.5) / kPixels * width - width / 2; };
    RayRecord ray;
    ray.lighting = &light_;
    ray.origin = {middle, middle, middle - eye};
    ray.direction = normalized(Vec3d(place(x), place(y), eye));
    ray.mask = kCameraRay;
    ray.seed = y * kPixels + x;
    return ray;
  }

  std::size_t samples(double width, double step) {
    std::size_t count = 0;
    for (int y = 0; y < kPixels; ++y)
      for (int x = 0; x < kPixels; ++x) {
        VolumeEntry entry;
        if (clipRay(entry, *volume_, ray(width, x, y)))
          count += std::ceil((entry.tExit - entry.tEnter) / step);
      }
    return count;
  }

  const VolumeRenderer& renderer() const { return renderer_; }
  RenderVolume& volume() { return *volume_; }

 private:
  SimFrame frame_;
  VolumeParams params_;
  std::shared_ptr<RenderVolume> volume_ = std::make_shared<RenderVolume>();
  VolumeRenderer renderer_;
  HeadLighting light_;
};

void march(benchmark::State& state, Filter filter, double noise) {
  Smoke smoke(128, 200, filter, noise);  // the cube is full
  constexpr double width = 100;
  measure(state, smoke.samples(width, smoke.volume().viewStep), [&] {
    smoke.picture(width, [&](RayRecord& ray) { traceVolumes(smoke.renderer(), ray); });
  });
}
BENCHMARK_CAPTURE(march, linear, Filter::kLinear, 0)->Name("march_linear");
BENCHMARK_CAPTURE(march, cubic, Filter::kBSpline, 0)->Name("march_cubic");
// Three octaves of detail noise.
BENCHMARK_CAPTURE(march, noise, Filter::kLinear, 20)->Name("march_noise");

void march_shadow(benchmark::State& state) {
  Smoke smoke(128, 200, Filter::kBSpline);
  constexpr double width = 100;
  measure(state, smoke.samples(width, smoke.volume().shadowStep), [&] {
    smoke.picture(width, [&](RayRecord& ray) { traceShadow(smoke.renderer(), ray); });
  });
}
BENCHMARK(march_shadow);

// `ratio`: the time for the same picture of the same cloud in a cube of twice the width, divided by
// that in the small one. It is CPU time, since other work on the machine would hide the difference
// in wall time. Cells are samples of the small cube.
void march_empty(benchmark::State& state) {
  constexpr double radius = 40, width = 90;
  Smoke small(96, radius, Filter::kLinear), large(192, radius, Filter::kLinear);
  const auto seconds = [&](Smoke& smoke) {
    const std::clock_t start = std::clock();
    smoke.picture(width, [&](RayRecord& ray) { traceVolumes(smoke.renderer(), ray); });
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  };
  double best_small = 1e9, best_large = 1e9;
  for (auto _ : state) {
    best_small = std::min(best_small, seconds(small));
    best_large = std::min(best_large, seconds(large));
  }
  report_iteration(state, small.samples(width, small.volume().viewStep), best_small);
  state.counters["ratio"] = best_large / best_small;
}
BENCHMARK(march_empty);

void proximity(benchmark::State& state) {
  Smoke smoke(static_cast<int>(state.range(0)), 40, Filter::kLinear);
  measure(state, static_cast<std::size_t>(std::pow(state.range(0), 3)),
          [&] { build_proximity(smoke.volume()); });
}
BENCHMARK(proximity)->Arg(128)->Arg(256)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace nbx::bench
