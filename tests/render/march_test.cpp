#include "render/march/march.h"

#include "render_scene.h"

namespace nbx {

namespace {

using namespace test;

constexpr int kCells = 20;
constexpr Vec3i kDims{kCells, kCells, kCells};

float uniform(int, int, int) { return 1; }

// A ball of smoke off the middle, so that no symmetry hides an error.
float ball(int i, int j, int k) {
  const double r = length(Vec3d(i - 9.3, j - 8.1, k - 10.7));
  return static_cast<float>(std::clamp(5.0 - r, 0.0, 1.0));
}

struct Mean {
  double sum = 0, squares = 0, n = 0;
  void add(double x) {
    sum += x;
    squares += x * x;
    ++n;
  }
  double value() const { return sum / n; }
  double error() const { return std::sqrt(std::max(squares / n - value() * value(), 0.0) / n); }
};

// Three standard errors, and the rounding of a march in floats (a few 1e-6 of the value).
void expect_mean(const Mean& mean, double exact) {
  EXPECT_NEAR(mean.value(), exact, 3 * mean.error() + 4e-6 * exact);
}

/// What many rays with different seeds see in green on one line through the first volume.
struct Traced {
  Mean passed, shadowed, light;
  Traced(const VolumeRenderer& renderer, const Vec3d& from, const Vec3d& to, unsigned count) {
    for (unsigned n = 0; n < count; ++n) {
      RayRecord ray = make_ray(*renderer.volumes[0], from, to, n), shadow = ray;
      EXPECT_TRUE(traceVolumes(renderer, ray) && traceShadow(renderer, shadow));
      passed.add(ray.transmittance[1]);
      shadowed.add(shadow.transmittance[1]);
      light.add(ray.radiance[1]);
    }
  }
};

}  // namespace

// Beer and Lambert, and light of a slab in closed form: with emission E per unit of extinction S
// and depth tau, the light is E / S (1 - e^-tau).
TEST(March, UniformSlabIsExact) {
  DensityFrame frame(kDims, uniform);
  add_grid(frame, kGridTemperature, kDims, uniform);
  for (const double scale : {1.0, 7.5})
    for (const double step : {0.05, 0.25, 0.5, 1.0})
      for (const int mode : {0, 1, 2}) {  // fixed, adaptive, adaptive with growing steps
        VolumeParams params = smoke_params(scale);
        params.viewStep = params.shadowStep = step;
        params.fire.channel = kGridTemperature;
        params.fire.density = 0.5;
        params.occlusion = 4;  // the fire leaves 3/4 of the smoke
        VolumeRenderer renderer = renderer_of(frame, params, mode > 0);
        renderer.adaptiveThreshold = mode == 2 ? 10 : 1e-4f;
        EXPECT_NEAR(renderer.volumes[0]->voxelLength, 2 * scale, 1e-12);
        const Traced march(renderer, {3, 4, -30}, {8, 9, 60}, 200);
        // 19 voxels of 0.02 m across the slab, at a slope.
        const double S = 0.5 + 3 * 0.75, E = 0.5 + 0.5 * 3 * 0.75;
        const double tau = S * 19 * 0.02 * length(Vec3d(5, 5, 90)) / 90;
        SCOPED_TRACE(testing::Message() << scale << " step " << step << " mode " << mode);
        expect_mean(march.passed, std::exp(-tau));
        expect_mean(march.shadowed, std::exp(-tau));
        expect_mean(march.light, E / S * -std::expm1(-tau));
      }
}

// The proximity skips only invisible gas: with and without it every ray sees the same, within the
// noise of its first sample. Curves that show a hull between two cells, displacement and blur are
// the hard cases.
TEST(March, ClippedRaysSeeTheSame) {
  constexpr Vec3i dims{34, 34, 34};
  DensityFrame frame(dims, ball);
  frame.simTime.length = {1, 25};
  add_grid(frame, kGridTemperature, dims,
           [](int i, int j, int k) { return ball(i, j, k) > 0 ? 1.0f : 0.0f; });
  add_velocity(frame, dims, [](int axis, int j) {
    return axis == 0 ? 0.5f + 0.02f * static_cast<float>(j) : -0.2f;
  });
  VolumeParams params = smoke_params();
  params.fire.channel = kGridTemperature;
  params.fire.curve = {};
  params.fire.curve.addPoint(0.4f, 0);
  params.fire.curve.addPoint(0.5f, 1);
  params.fire.curve.addPoint(0.6f, 0);
  params.viewStep = params.shadowStep = 0.1;
  for (const int moved : {0, 1, 2})
    for (const Filter filter : {Filter::kLinear, Filter::kCatmullRom, Filter::kBSpline}) {
      params.filter = filter;
      params.smoke.displace = moved == 1 ? 1.5 : 0;
      params.motion_blur = moved == 2 ? 1 : 0;
      const VolumeRenderer renderer = renderer_of(frame, params, false);
      Mean difference, light, clipped;
      for (unsigned n = 0; n < 300; ++n) {
        const Vec3d from(-20, n % 17, 3 + n % 11), to(33, 6 + n % 7, 9);
        RayRecord ray = make_ray(*renderer.volumes[0], from, to, n), whole = ray;
        VolumeEntry entry;
        clipped.add(clipRay(entry, *renderer.volumes[0], ray) ? entry.tExit - entry.tEnter : 0);
        traceVolumes(renderer, ray);
        FieldHandle proximity;
        proximity.swap(renderer.volumes[0]->proximity);
        traceVolumes(renderer, whole);
        proximity.swap(renderer.volumes[0]->proximity);
        light.add(whole.radiance[0]);
        difference.add(ray.radiance[0] - whole.radiance[0]);
      }
      SCOPED_TRACE(testing::Message()
                   << "moved " << moved << " filter " << static_cast<int>(filter));
      EXPECT_LT(clipped.value(), 50);  // of about 70 across the box
      EXPECT_GT(light.value(), 0.02);
      EXPECT_NEAR(difference.value(), 0, 3 * difference.error());
      EXPECT_LT(difference.error(), 0.003 * light.value());
    }
}

// Two volumes that overlap in a part of the ray: their extinctions add up, also with voxels of
// different size, and masks hide one or both.
TEST(March, VolumesAddUp) {
  DensityFrame frame(kDims, uniform);
  VolumeParams fine = smoke_params(), coarse = smoke_params(2);
  coarse.smoke.ramp = plain_ramp({0, 0, 1});
  VolumeRenderer renderer = renderer_of(frame, fine);
  renderer.volumes.push_back(make_volume(frame, coarse));
  RenderVolume &a = *renderer.volumes[0], &b = *renderer.volumes[1];
  const double each = std::exp(-3 * 19 * 0.02);  // opacity doesn't grow with the object
  const auto passed = [&](auto trace, std::uint32_t mask) {
    RayRecord ray = make_ray(a, {4, 4, -10}, {4, 4, 80}, 5);
    ray.mask = mask;
    return trace(renderer, ray) ? ray.transmittance[2] : -1;
  };
  EXPECT_NEAR(passed(traceVolumes, kCameraRay), each * each, 1e-5);
  EXPECT_NEAR(passed(traceShadow, kShadowRay), each * each, 1e-5);

  b.excludeMask = kCameraRay;
  b.innerExcludeMask = kCameraRay | kShadowRay;
  EXPECT_NEAR(passed(traceVolumes, kCameraRay), each, 1e-5);
  EXPECT_NEAR(passed(traceShadow, kShadowRay), each * each, 1e-5);
  EXPECT_NEAR(passed(traceShadow, kShadowRay | kLightQueryRay), each, 1e-5);
  a.ready = false;
  EXPECT_EQ(passed(traceVolumes, kCameraRay), -1);
  EXPECT_EQ(passed(traceShadow, kShadowRay | kLightQueryRay), -1);

  a.ready = true;
  a.matte = true;
  a.matteColor = {0, 1, 0};
  RayRecord ray = make_ray(a, {4, 4, -10}, {4, 4, 80}, 5);
  traceVolumes(renderer, ray);
  EXPECT_NEAR(ray.radiance[1], 1 - each, 1e-5);  // its color times its opacity
  EXPECT_EQ(ray.radiance[0], 0);
}

// Roulette ends half of the rays below a transmittance of 0.5: single rays differ, means don't. A
// fade of t / 100 has the mean (a + b) / 200 over the part from a to b of a ray. Shadows don't
// fade.
TEST(March, RouletteLeavesTheMeanAndFadesFollowTheDistance) {
  DensityFrame frame(kDims, uniform);
  VolumeParams params = smoke_params(), fading = params;
  params.viewStep = params.shadowStep = 0.5;
  fading.depth_fade = line_curve();
  fading.viewStep = 0.05;
  const double depth = 3 * 0.38, exact = std::exp(-depth), faded = std::exp(-depth * 98 / 200);
  for (const bool adaptive : {false, true}) {
    VolumeRenderer renderer = renderer_of(frame, params, adaptive);
    renderer.cutoff = 0.5;
    const Traced march(renderer, {9, 9, -5}, {9, 9, 30}, 100000);
    EXPECT_GT(march.passed.error(), 1e-4);
    expect_mean(march.passed, exact);
    expect_mean(march.shadowed, exact);
    expect_mean(march.light, (1 - exact) / 2);
    const Traced fade(renderer_of(frame, fading, adaptive), {9, 9, -15}, {9, 9, 30}, 200);
    expect_mean(fade.passed, faded);
    expect_mean(fade.light, (1 - faded) / 2);
    expect_mean(fade.shadowed, exact);
  }
}

// An adaptive march takes about one sample per voxel in thin fog, and many in a bright sheet. The
// ramp counts the samples in each.
TEST(March, AdaptiveStepsFollowTheSignal) {
  struct Counter final : ColorRamp {
    mutable int fog = 0, sheet = 0;
    void lookup(Colors& color, const float* values, int n) const override {
      for (int i = 0; i < n; ++i) {
        ++(values[i] > 0.1f ? sheet : fog);
        for (auto& channel : color.c) channel[i] = 1;
      }
    }
    Color maxColor() const override { return {1, 1, 1}; }
  };
  constexpr int cells = 130, sheet = 65;
  DensityFrame frame({cells, 8, 8}, [](int i, int, int) { return i == sheet ? 1.0f : 0.0004f; });
  const auto ramp = std::make_shared<Counter>();
  VolumeParams params = smoke_params();
  params.smoke.density = 60;
  params.smoke.ramp = ramp;
  params.viewStep = 0.05;
  VolumeRenderer renderer = renderer_of(frame, params);
  renderer.adaptiveThreshold = 0.05f;
  RayRecord ray = make_ray(*renderer.volumes[0], {-30, 3.5, 4}, {200, 3.5, 4}, 1);
  traceVolumes(renderer, ray);
  EXPECT_GE(ramp->fog, cells - 3) << "no step is longer than a voxel";
  EXPECT_LT(ramp->fog, 4 * cells) << "and most are much longer than the shortest";
  // The part denser than 0.1, 1.8 voxels in all, has an optical depth of about 1.2: contributions
  // of 0.05 take at least 20 steps.
  EXPECT_GE(ramp->sheet, 20);
  EXPECT_NEAR(-std::log(ray.transmittance[0]), 60 * 0.02, 0.1);
}

// Two sheets, one behind the other, in a volume that is scaled by 6 in another direction: no step
// over empty space may miss one of them.
TEST(March, UnevenVolumesLoseNothing) {
  DensityFrame frame({34, 34, 34}, [](int, int j, int) { return j == 8 || j == 24 ? 1.0f : 0.0f; });
  VolumeParams params = smoke_params();
  params.world_to_object.rows[0][0] = 1.0 / 6;
  params.smoke.density = 300;
  params.viewStep = params.shadowStep = 0.01;
  const VolumeRenderer renderer = renderer_of(frame, params, false);
  Mean passed, shadowed;
  for (unsigned n = 0; n < 100; ++n) {
    RayRecord ray = make_ray(*renderer.volumes[0], {10 + n % 9, -9, 7}, {10, 40, 15}, n);
    RayRecord shadow = ray;
    traceVolumes(renderer, ray);
    traceShadow(renderer, shadow);
    const Vec3d d = renderer.volumes[0]->worldToVoxel.linear(ray.direction);
    const double depth = 300 * 2 * renderer.volumes[0]->sigmaScale / d[1];
    passed.add(-std::log(ray.transmittance[0]) / depth);
    shadowed.add(-std::log(shadow.transmittance[0]) / depth);
  }
  EXPECT_NEAR(passed.value(), 1, 0.01);
  EXPECT_NEAR(shadowed.value(), 1, 0.01);
}

// Detail noise moves gas into space that the proximity takes for empty. So a march with noise sees
// the same whatever the proximity is in the gap between two sheets.
TEST(March, NoiseReachesIntoEmptySpace) {
  DensityFrame frame({40, 20, 20}, [](int i, int, int) {
    return (i >= 8 && i <= 10) || (i >= 30 && i <= 32) ? 1.0f : 0.0f;
  });
  VolumeParams params = smoke_params();
  params.smoke.noise = {.percent = 100, .scale_a = 20, .scale_b = 20};
  VolumeRenderer renderer = renderer_of(frame, params);
  RenderVolume& volume = *renderer.volumes[0];
  std::vector<float> seen;
  double gap = 0;
  for (const bool known : {false, true}) {
    if (known)
      each_cell(volume.proximity->dims(), 0, [&](int i, int j, int k) {
        if (i > 11 && i < 29) (*volume.proximity)(i, j, k) = -1;
      });
    for (unsigned n = 0; n < 20; ++n) {
      RayRecord ray = make_ray(volume, {-9, 3 + n % 13, 8}, {50, 9, 4 + n % 11}, n);
      renderer.adaptive = n % 2 == 0;
      RayRecord shadow = ray, middle = ray;
      middle.tMin = 2 * 25;
      middle.tMax = 2 * 34;
      traceVolumes(renderer, ray);
      traceShadow(renderer, shadow);
      if (known && traceShadow(renderer, middle)) gap += 1 - middle.transmittance[0];
      if (!known) seen.push_back(ray.transmittance[0] + shadow.transmittance[0]);
      EXPECT_EQ(seen[n], ray.transmittance[0] + shadow.transmittance[0]) << n;
    }
  }
  EXPECT_GT(gap, 0.2) << "there is gas in the gap";
}

// In a uniform flow motion blur is a box filter along the flow: 1 m/s for 0.04 s is 2 voxels.
TEST(March, BlurFollowsTheFlow) {
  DensityFrame frame(kDims, [](int i, int, int) { return i == 10 ? 1.0f : 0.0f; });
  frame.simTime.length = {1, 25};
  add_velocity(frame, kDims, [](int axis, int) { return axis == 0 ? 1.0f : 0.0f; });
  VolumeParams params = smoke_params();
  params.motion_blur = 1;
  params.motion_blur_step = 0.01;
  const VolumeRenderer renderer = renderer_of(frame, params);
  for (const double x : {8.5, 10.0, 11.0, 12.0, 12.5, 14.0}) {
    RayRecord ray = make_ray(*renderer.volumes[0], {x, 9, -5}, {x, 9, 30}, 1);
    traceShadow(renderer, ray);
    const auto integral = [](double d) {  // of the triangle round the sheet
      d = std::clamp(d, -1.0, 1.0);
      return d < 0 ? (1 + d) * (1 + d) / 2 : 1 - (1 - d) * (1 - d) / 2;
    };
    const double mean = (integral(x - 10) - integral(x - 12)) / 2;
    EXPECT_NEAR(-std::log(ray.transmittance[0]), mean * 3 * 19 * 0.02, 0.01) << x;
  }
}

// Missing or absurd input gives no NaN and no crash, and shows nothing where there is nothing.
TEST(March, BadInputGivesNoNaN) {
  DensityFrame frame(kDims, ball);
  add_grid(frame, kGridTemperature, kDims, [](int i, int, int) { return i == 4 ? NAN : 1e30f; });
  using Params = VolumeParams;
  const auto trace = [&](auto change) {
    VolumeParams params = smoke_params();
    change(params);
    const VolumeRenderer renderer = renderer_of(frame, params, false);
    RayRecord ray;
    for (unsigned n = 0; n < 60; ++n) {
      ray = make_ray(*renderer.volumes[0], {9, 8, 10}, {n % 5, n % 7, n}, n);
      RayRecord shadow = ray;
      traceVolumes(renderer, ray);
      traceShadow(renderer, shadow);
      for (std::size_t c = 0; c < 3; ++c)
        EXPECT_TRUE(
            std::isfinite(ray.radiance[c] + ray.transmittance[c] + shadow.transmittance[c]));
    }
    return ray.transmittance[0];
  };
  const float good = trace([](Params&) {});
  EXPECT_LT(good, 0.99f);  // from within the ball
  EXPECT_EQ(trace([](Params& absent) { absent.smoke.channel = kGridFuel; }), 1);
  EXPECT_EQ(trace([](Params& curveless) { curveless.smoke.curve = {}; }), 1);
  EXPECT_EQ(trace([](Params& p) {
              p.smoke.ramp = std::make_shared<GradientRamp>(std::vector<GradientKnot>{});
            }),
            good);
  trace([](Params& wild) { wild.fire.channel = kGridTemperature, wild.occlusion = 0; });
  trace([](Params& p) { p.smoke.channel = kRampY, p.depth_fade = RationalSpline(); });
  trace([](Params& flat) { flat.object_to_cell.rows = {}; });
  DensityFrame thin({2, 9, 9}, uniform);
  EXPECT_FALSE(make_volume(thin, smoke_params())->ready);
}

}  // namespace nbx
