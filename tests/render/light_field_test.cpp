#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "render/direct_light_field.h"
#include "render/render_volume.h"
#include "render/scattered_light_field.h"
#include "render_scene.h"

namespace nbx {
namespace {

using namespace test;

bool go_on(int, int, int, int) { return false; }

// Two lights: one from above whose color depends on the place, one from the side. Counts its calls,
// holds them up until `team` threads have called, and notices if two call by the same number.
struct TestLighting final : Lighting {
  std::atomic<int> calls{0};
  std::mutex mutex;
  std::condition_variable complete;
  std::size_t team = 0;
  std::set<std::thread::id> threads;
  std::map<int, std::thread::id> callers;
  bool mixed_up = false;
  int lights = 2;
  bool curved = false;  // the green of the first is y^2
  int lightCount() override { return lights; }
  Vec3d lightPosition(int n) override { return n == 0 ? Vec3d{0, 1e9, 0} : Vec3d{1e9, 0, 0}; }
  bool illuminate(int n, const RenderVolume&, const Vec3d& p, Color& color, Vec3d& direction,
                  int thread) override {
    ++calls;
    const auto me = std::this_thread::get_id();
    std::unique_lock lock(mutex);
    mixed_up = mixed_up || callers.try_emplace(thread, me).first->second != me;
    threads.insert(me);
    complete.notify_all();
    EXPECT_TRUE(
        complete.wait_for(lock, std::chrono::minutes(1), [&] { return threads.size() >= team; }));
    direction = n == 0 ? Vec3d{0, 1, 0} : Vec3d{1, 0, 0};
    color = n == 0
                ? Color{static_cast<float>(p[0]), curved ? static_cast<float>(p[1] * p[1]) : 1, 2}
                : Color{0, 0, 0.5f};
    return true;
  }
};

VolumeShader shader(const Vec3i& dims, float value, const Color& color) {
  VolumeShader s;
  s.on = true;
  const FieldHandle field = acquire_field(dims);
  std::fill_n(field->data(), field->count(), value);
  s.color_sampler.field = field;
  s.color_curve = s.density_curve = line_curve();
  s.color_curve.rebuild();
  s.density_curve.rebuild();
  s.ramp = plain_ramp(color);
  return s;
}

// In a world of meters.
RenderVolume volume_of(const Vec3i& dims, double voxel = 1) {
  RenderVolume volume;
  volume.dims = dims;
  volume.worldToVoxel = volume.voxelToWorld = Affine3d::identity();
  for (int a = 0; a < 3; ++a) {
    volume.worldToVoxel.rows[a][a] = 1 / voxel;
    volume.voxelToWorld.rows[a][a] = voxel;
  }
  volume.metresPerUnit = 1;
  volume.smoke.on = volume.fire.on = false;
  return volume;
}

TEST(DirectLightField, KeepsWhatLightsGiveToAllThreads) {
  const RenderVolume volume = volume_of({12, 10, 9});
  for (const double scale : {1.0, 0.5, 2.0})
    for (const LightCache mode :
         {LightCache::kLinear, LightCache::kCubic, LightCache::kPerLight, LightCache::kNone}) {
      TestLighting lighting;
      lighting.curved = true;
      DirectLightField field({.mode = mode, .gridScale = scale});
      ASSERT_TRUE(field.prepare(lighting, volume, 4, go_on));
      EXPECT_EQ(lighting.calls, 0);
      RayRecord ray;
      ray.thread = 4;
      const Points points = points_at({{4.25f, 4.5f, 4.125f}, {4, 4, 4}, {0.5f, 0.5f, 0.5f}});
      std::array<Colors, 4> lights;  // of threads that meet in cells not computed yet
      lighting.team = lights.size();
      std::vector<std::thread> threads;
      for (int n = 0; n < 4; ++n)
        threads.emplace_back([&, n] {
          RayRecord own;
          own.thread = n;
          field.query(lights[n], lighting, own, points);
        });
      for (std::thread& thread : threads) thread.join();
      Colors& light = lights[0];
      // Light is linear along x, where all look-ups are exact. Along y it is a square. There, at
      // the fraction f of a cell of edge h, trilinear look-up is h^2 f (1 - f) too high, and a
      // spline h^2 / 3, except near the rim.
      for (int i = 0; i < points.n; ++i) {
        const Color color = light.at(i);
        const double y = points.y[i], h = 1 / scale, f = y / h - std::floor(y / h);
        const bool spline = mode == LightCache::kCubic && points.x[i] >= h;
        const double more = mode == LightCache::kNone ? 0 : spline ? 1.0 / 3 : f * (1 - f);
        EXPECT_NEAR(color[0], points.x[i], 1e-5) << "mode " << static_cast<int>(mode);
        EXPECT_NEAR(color[1], y * y + more * h * h, 1e-4) << i << " scale " << scale;
        EXPECT_NEAR(color[2], 2.5, 1e-5);
        for (const Colors& other : lights) EXPECT_EQ(other.at(i), color);
      }
      const int calls = lighting.calls;
      field.query(light, lighting, ray, points);
      EXPECT_EQ(lighting.calls - calls, mode == LightCache::kNone ? 2 * points.n : 0);
      EXPECT_FALSE(lighting.mixed_up);
      if (mode == LightCache::kNone) continue;
      field.query(light, lighting, ray, points_at({{-0.1f, 4, 4}, {4, 4, 8.6f}, {NAN, 4, 4}}));
      for (int i = 0; i < 3; ++i) EXPECT_EQ(light.at(i), (Color{0, 0, 0})) << i;
    }
}

TEST(DirectLightField, WeighsLightsByTheirDirection) {
  const RenderVolume volume = volume_of({6, 6, 6});
  const double g = 0.6;
  RayRecord ray;
  ray.direction = {0.6, 0.8, 0};
  for (const LightCache mode : {LightCache::kPerLight, LightCache::kNone, LightCache::kLinear}) {
    TestLighting lighting;
    // The eye looks along the ray.
    DirectLightField field(
        {.mode = mode, .anisotropy = g, .eye = Vec3d{2, 2, 2} - ray.direction * 50.0});
    ASSERT_TRUE(field.prepare(lighting, volume, 1, go_on));
    Colors light;
    field.query(light, lighting, ray, points_at({{2, 2, 2}}));
    const double up = (1 - g * g) / std::pow(1 - 0.8 * g, 2);
    const double side = (1 - g * g) / std::pow(1 - 0.6 * g, 2);
    EXPECT_NEAR(light.at(0)[0], 2 * up, 1e-5);
    EXPECT_NEAR(light.at(0)[2], 2 * up + 0.5 * side, 1e-5);
  }
}

TEST(ScatteredLightField, SpreadsLightOfFireAndLamps) {
  const Vec3i dims{9, 8, 7};
  RenderVolume volume = volume_of(dims);
  volume.smoke = shader(dims, 0.5f, {1, 0.5f, 0});
  RayRecord ray;
  Colors light;
  const Points middle = points_at({{4, 4, 3}, {1.5f, 4, 3}});
  TestLighting lighting;

  // Lights: their own light and what the smoke scatters, in the smoke's color.
  ScatteredLightField lit({.maxSweeps = 3});
  lighting.team = 2;
  ASSERT_TRUE(lit.prepare(lighting, volume, 2, go_on));
  EXPECT_FALSE(lighting.mixed_up);
  lit.query(light, lighting, ray, middle);
  EXPECT_GT(light.at(0)[0], 4 * 1.2);
  EXPECT_LT(light.at(0)[0], 4 * 4.0);
  EXPECT_GT(light.at(0)[1], 1.05f);
  EXPECT_LT(light.at(0)[1], light.at(0)[0] / 4) << "less of green is scattered";
  EXPECT_FLOAT_EQ(light.at(0)[2], 2.5f) << "blue isn't scattered";
  const Color once = light.at(0);
  ASSERT_TRUE(lit.prepare(lighting, volume, 1, go_on));
  lit.query(light, lighting, ray, middle);
  EXPECT_EQ(light.at(0), once) << "another number of threads";

  lighting.lights = 0;
  volume.fire = shader(dims, 0.25f, {3, 3, 3});
  const auto total = [&](ScatteredLightParams params, const RenderVolume& in, const Vec3f& at) {
    ScatteredLightField field(params);
    EXPECT_TRUE(field.prepare(lighting, in, 2, go_on));
    field.query(light, lighting, ray, points_at({at}));
    return light.at(0)[0];
  };
  const Vec3f at{4, 4, 3};
  EXPECT_GT(total({}, volume, at), 0.05f) << "fire alone";
  lighting.lights = 2;
  volume.fire.on = false;
  EXPECT_NE(total({.cubic = true}, volume, {4, 3.5f, 3}), total({}, volume, {4, 3.5f, 3}));
  EXPECT_LT(total({.extinctionScale = 2}, volume, at), 0.99f * total({}, volume, at));
  // Cells of two voxels equal voxels of twice the length.
  RenderVolume fine = volume_of({8, 8, 8}), coarse = volume_of({4, 4, 4}, 2);
  fine.smoke = shader(fine.dims, 0.5f, {1, 1, 1});
  coarse.smoke = shader(coarse.dims, 0.5f, {1, 1, 1});
  EXPECT_FLOAT_EQ(total({.gridScale = 0.5}, fine, {4, 4, 2}), total({}, coarse, {2, 2, 1}));

  ScatteredLightField broken({});
  EXPECT_FALSE(broken.prepare(lighting, volume, 2, [](int, int, int, int) { return true; }));
}

}  // namespace
}  // namespace nbx
