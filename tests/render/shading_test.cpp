#include "render/shading.h"

#include "math/field_filters.h"
#include "math/interpolation.h"
#include "render/light/scatter_setup.h"
#include "render/proximity.h"
#include "render_scene.h"

namespace nbx {

using namespace test;

// The Planckian locus of the CIE 1931 observer (G. Wyszecki and W. S. Stiles, Color Science, 2nd
// edition, 1982, 1(3.3.4)). The ramp uses that observer with Judd's and Vos's correction below 460
// nm, which moves these chromaticities by up to 0.0055; a step of 100 K at 3000 K is 0.006.
TEST(Blackbody, HasPublishedChromaticities) {
  struct {
    double T, x, y;
  } const rows[] = {{2000, 0.5267, 0.4133}, {2500, 0.4770, 0.4137}, {3000, 0.4369, 0.4041},
                    {4000, 0.3805, 0.3768}, {5000, 0.3451, 0.3516}, {6500, 0.3135, 0.3237},
                    {10000, 0.2807, 0.2884}};
  const auto xyz = [](double T, double compression) {
    const Color rgb = BlackbodyRamp({.max_kelvin = T, .compression = compression}).lookup(1);
    // Linear RGB of ITU-R BT.709 to XYZ.
    return Vec3d(0.412453 * rgb[0] + 0.357580 * rgb[1] + 0.180423 * rgb[2],
                 0.212671 * rgb[0] + 0.715160 * rgb[1] + 0.072169 * rgb[2],
                 0.019334 * rgb[0] + 0.119193 * rgb[1] + 0.950227 * rgb[2]);
  };
  const auto sum = [](const Vec3d& v) { return v[0] + v[1] + v[2]; };
  for (const auto& row : rows) {
    const Vec3d physical = xyz(row.T, 0), compressed = xyz(row.T, 50);
    EXPECT_NEAR(physical[0] / sum(physical), row.x, 0.006) << row.T;
    EXPECT_NEAR(physical[1] / sum(physical), row.y, 0.006) << row.T;
    // The brightness, as floats and the rounded matrices have it. Full compression leaves its
    // fourth root.
    EXPECT_NEAR(sum(compressed) / std::pow(sum(physical), 0.25), 1, 1e-5) << row.T;
  }
  EXPECT_GT(sum(xyz(4000, 0)) / sum(xyz(2000, 0)), 100);
  const BlackbodyRamp ramp;
  EXPECT_EQ(ramp.lookup(0), (Color{0, 0, 0}));
  EXPECT_EQ(ramp.lookup(NAN), ramp.lookup(-1));
  EXPECT_EQ(ramp.lookup(2), ramp.maxColor());
}

TEST(GradientRamp, GoesFromKnotToKnot) {
  using Way = GradientKnot::Interpolation;
  const GradientRamp ramp({{0.75f, {4, 0, 0}, Way::kStep},
                           {0, {0, 0, 2}, Way::kLinear},
                           {0.5f, {2, 0, 0}, Way::kSmooth},
                           {1, {1, 0, 0}}},
                          0.5);
  const std::pair<float, float> red[] = {
      {-1, 0},    {0.25f, 0.5f}, {0.5f, 1}, {0.5625f, 1.15625f}, {0.7f, 1.896f}, {0.76f, 2},
      {0.99f, 2}, {1, 0.5f},     {9, 0.5f}};
  for (const auto& [v, r] : red) EXPECT_NEAR(ramp.lookup(v)[0], r, 1e-6) << v;
  EXPECT_EQ(ramp.maxColor(), (Color{2, 0, 1}));
}

// Catmull-Rom reproduces parabolas. B-splines add a sixth of the second derivative to them. Beyond
// the rim the rules of the table in channel_sampler.h apply.
TEST(ChannelSampler, FiltersFollowTheirFormulas) {
  SimFrame frame;
  const auto parabola = [](auto x, auto y, auto z) {
    return 1 + 0.5f * x + 0.25f * x * x + 0.5f * y * y + z;
  };
  add_grid(frame, kGridDensity, {9, 10, 11}, [&](int i, int j, int k) {
    return parabola(static_cast<float>(i), static_cast<float>(j), static_cast<float>(k));
  });
  const Vec3f a(3.3f, 4.7f, 5.1f), b(6.99f, 7.9f, 8.9f), outside(-0.5f, 3.5f, 4.5f);
  const Points points =
      points_at({{1, 1, 1}, a, b, {2, 3.5f, 8}, outside, {8, 9, 10}, {NAN, 2, 2}});
  everywhere([&] {
    alignas(64) float values[3][kBlock];
    const auto& [linear, cubic, spline] = values;
    ChannelSampler sampler;
    ASSERT_TRUE(sampler.bind(frame, kGridDensity, Filter::kLinear));
    for (const Filter filter : {Filter::kLinear, Filter::kCatmullRom, Filter::kBSpline}) {
      sampler.filter = filter;
      sampler.sample(values[static_cast<int>(filter)], points);
    }
    for (int i = 0; i < 4; ++i) {
      const float exact = parabola(points.x[i], points.y[i], points.z[i]);
      EXPECT_NEAR(cubic[i], exact, 2e-5 * exact) << i;
      EXPECT_NEAR(spline[i], exact + (0.25 + 0.5) / 3, 2e-5 * exact) << i;
    }
    EXPECT_EQ(linear[4], 0);
    EXPECT_EQ(cubic[4], parabola(0.0f, 3.0f, 4.5f) / 2 + parabola(0.0f, 4.0f, 4.5f) / 2);
    EXPECT_EQ(spline[4], cubic[4]);
    EXPECT_EQ(linear[5], parabola(8.0f, 9.0f, 10.0f));
    EXPECT_EQ(linear[6], 0);
    EXPECT_EQ(spline[6], parabola(0.0f, 2.0f, 2.0f));
  });
}

// Ramps rise along their axis, from the first inner layer. A blurred channel is a copy, and the
// frame's own stays as it was.
TEST(ChannelSampler, RampsAndBlurs) {
  const Vec3i dims{7, 9, 11};
  DensityFrame frame(dims,
                     [](int i, int j, int k) { return i == 3 && j == 4 && k == 5 ? 1.0f : 0.0f; });
  const Points points = points_at({{2, 3, 4}, {0, 0, 0}, {6, 8, 10}, {3, 4, 5}, {4, 4, 5}});
  alignas(64) float value[kBlock];
  for (int axis = 0; axis < 3; ++axis) {
    ChannelSampler ramp;
    ASSERT_TRUE(ramp.bind(frame, kRampX - axis, Filter::kLinear));
    ramp.sample(value, points);
    const float inner = dims[axis] - 2;
    EXPECT_FLOAT_EQ(value[0], static_cast<float>(1 + axis) / inner) << axis;
    EXPECT_EQ(value[1], 0);
    EXPECT_FLOAT_EQ(value[2], (inner - 1) / inner);
  }
  VolumeParams params = smoke_params();
  params.smoke.blur = 3;  // units: one and a half voxels
  const auto volume = make_volume(frame, params);
  Field<float> expected, tmp(dims[0], dims[1], dims[2]);
  expected.copy(*frame.grid(kGridDensity));
  box_blur3D(expected, tmp, 1.5);
  volume->smoke.color_sampler.sample(value, points);
  EXPECT_EQ(value[3], expected(3, 4, 5));
  EXPECT_EQ(value[4], expected(4, 4, 5));
  EXPECT_GT(value[4], 0.01f);
  EXPECT_EQ((*frame.grid(kGridDensity))(3, 4, 5), 1);
}

// Gas is looked up upstream. Two frames of 1/25 s in a flow of (1, -1/2, 1/4) m/s are a distance of
// (4, -2, 1) voxels.
TEST(Displacement, LooksUpstream) {
  const Vec3i dims{20, 20, 20};
  const auto value = [](int i, int j, int k) { return static_cast<float>(i + 20 * j + 400 * k); };
  DensityFrame frame(dims, value);
  add_velocity(frame, dims, [](int axis, int) {
    return axis == 0 ? 1 : axis == 1 ? -0.5f : 0.25f;
  });
  VolumeParams params = smoke_params();
  params.smoke.displace = 2;
  const auto volume = make_volume(frame, params);
  Points from;
  displace(from, *volume, volume->smoke, points_at({{9, 9, 9}}));
  EXPECT_LT(length(Vec3f(from.x[0], from.y[0], from.z[0]) - Vec3f(5, 11, 8)), 1e-5f);
  const RenderVolume still = bake_displacement(*volume);
  EXPECT_NEAR((*still.smoke.color_sampler.field)(9, 9, 9), value(5, 11, 8), 0.1);
}

// Against the distance to every surface cell.
TEST(Proximity, IsTheDistanceToWhatShows) {
  const Vec3i dims{23, 19, 21};
  const auto shows = [](int i, int j, int k) {
    return (i > 4 && i < 10 && j > 6 && j < 12 && k > 8 && k < 14) || (i == 18 && j == 4 && k == 3);
  };
  DensityFrame frame(dims, shows);
  const auto volume = make_volume(frame, smoke_params());
  std::vector<Vec3i> surface;
  each_cell(dims, 1, [&](int i, int j, int k) {
    bool all = true;
    for (int n = 0; n < 27; ++n)
      all = all && shows(i + n % 3 - 1, j + n / 3 % 3 - 1, k + n / 9 - 1);
    if (shows(i, j, k) && !all) surface.push_back({i, j, k});
  });
  EXPECT_GT(surface.size(), 50u);
  float worst = 0;
  each_cell(dims, 1, [&](int i, int j, int k) {
    int least = 1 << 20;
    for (const Vec3i& s : surface)
      least = std::min(least, dot(s - Vec3i(i, j, k), s - Vec3i(i, j, k)));
    const float d = std::sqrt(static_cast<float>(least)) * (shows(i, j, k) ? -1.0f : 1.0f);
    worst = std::max(worst, std::abs((*volume->proximity)(i, j, k) - (d - 3.5f)));
  });
  EXPECT_LT(worst, 1e-5f);
  DensityFrame empty(dims, [](int, int, int) { return 0.0f; });
  EXPECT_EQ((*make_volume(empty, smoke_params())->proximity)(5, 5, 5), 1.75f * 23 - 3.5f);
}

// Fire with c = b = 1 and smoke whose density is a parabola, in a voxel of which the fire hides a
// quarter. The view and finer grids of light filter by B-splines, which add h^2 / 6 times the
// second derivative; the others look up linearly.
// No brick is near where a look-up gives more than 0, and most others are.
TEST(Proximity, NearBricksHoldNothingAbove0) {
  for (const Vec3i& dims : {Vec3i(4, 5, 6), Vec3i(17, 13, 9), Vec3i(2, 8, 33)}) {
    Field<float> field(dims[0], dims[1], dims[2]);
    each_cell(dims, 0, [&](int i, int j, int k) {
      field(i, j, k) = i % 12 == 8 || j % 12 == 8 || k % 12 == 8 ? 0.5f : i == 1 ? 0 : -1.0f;
    });
    const NearBricks near(field);
    int found = 0, wrong = 0;
    for (float z = -0.5f; z < dims[2]; z += 0.25f)
      for (float y = -0.5f; y < dims[1]; y += 0.25f)
        for (float x = -0.5f; x < dims[0]; x += 0.25f) {
          if (!near.contains({x, y, z})) continue;
          ++found;
          wrong += sample_linear(field, x, y, z) > 0;
        }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(found, 500);
    EXPECT_FALSE(near.contains({NAN, 1, 1}));
  }
}

TEST(Shading, SameFormulaForViewShadowAndScattering) {
  const Vec3i dims{6, 6, 6};
  DensityFrame frame(dims, [](int i, int, int) { return 0.06f * static_cast<float>(i * i); });
  add_grid(frame, kGridTemperature, dims, [](int, int, int) { return 1.0f; });
  VolumeParams params = smoke_params();
  params.fire.channel = kGridTemperature;
  params.fire.density = 2;
  params.occlusion = 4;
  params.albedo = 0.5;
  params.filter = Filter::kBSpline;
  const auto volume = make_volume(frame, params);
  const Color fire{1, 0.5f, 0.25f};
  const float linear = 0.75f * 0.24f, spline = 0.75f * 0.26f;
  const auto extinction = [](float smoke) { return 2 * 1 + 3 * smoke; };
  const auto smoke_color = [&](int c, float smoke) { return fire[c] * 3 * 0.5f * smoke; };

  const Points points = points_at({{2, 3, 2}});
  Shaded view;
  alignas(64) float shadow[kBlock];
  shade(view, *volume, {}, points);
  shade_extinction(shadow, *volume, points);
  const SweepMedium medium = scatter_medium(*volume, dims, {.extinctionScale = 8}, 2);
  const SweepMedium fine = scatter_medium(*volume, dims * 2, {.gridScale = 2}, 2);
  Field3 direct(dims, 0), source(dims, 0);
  HeadLighting light;
  ASSERT_TRUE(initial_light(direct, source, *volume, light,
                            {.directWeight = 0.5f, .emissionWeight = 3}, 2,
                            [](int, int, int, int) { return false; }));
  const auto cell = direct.index(2, 3, 2), fine_cell = Field3::index(fine.dims, 4, 6, 4);
  EXPECT_FLOAT_EQ(view.extinction[0], extinction(spline));
  EXPECT_FLOAT_EQ(shadow[0], extinction(linear));
  EXPECT_FLOAT_EQ(medium.cells[cell].extinction, 8 * extinction(linear));
  EXPECT_FLOAT_EQ(fine.cells[fine_cell].extinction, extinction(spline));
  for (int c = 0; c < 3; ++c) {
    EXPECT_FLOAT_EQ(view.emission.c[c][0], fire[c] + smoke_color(c, spline));
    EXPECT_FLOAT_EQ(medium.cells[cell].scattering[c], smoke_color(c, linear));
    EXPECT_FLOAT_EQ(direct.cell(cell)[c], 1);
    EXPECT_FLOAT_EQ(source.cell(cell)[c], 3 * fire[c] + 0.5f);
  }
}

// The kernel of shadow rays gives the bits of the general formula, whichever shaders are on and
// wherever their grids end, with several spans of either kind.
TEST(Shading, ShadowsFollowTheFormulaToTheBit) {
  DensityFrame frame({9, 8, 7}, [](int i, int j, int k) { return 0.02f * float(i + j * k); });
  add_grid(frame, kGridTemperature, {7, 8, 9},
           [](int i, int j, int) { return 0.2f * float(i - j); });
  VolumeParams params = smoke_params();
  params.occlusion = 0.8;
  params.fire.density = 2.5;
  params.fire.curve = params.smoke.curve = {};
  for (const auto& [x, y] : {std::pair(-0.3f, -0.5f), {0.1f, 0.1f}, {0.4f, 0.9f}, {0.9f, 0.2f}}) {
    params.fire.curve.addPoint(x, y);
    params.smoke.curve.addPoint(x, 1 - y);
  }
  params.smoke.curve.setBias(1, 0.7f);
  Points points;
  points.n = 13;
  for (int i = 0; i < kBlock; ++i) {
    points.x[i] = 0.7f * static_cast<float>(i) - 0.5f;
    points.y[i] = 7 - 0.45f * static_cast<float>(i);
    points.z[i] = i == 5 ? NAN : 0.55f * static_cast<float>(i);
  }
  for (const auto& [smoke, fire] : {std::pair<int, int>(kGridDensity, kGridTemperature),
                                    {kGridDensity, kGridDensity},
                                    {kGridDensity, kNoGrid},
                                    {kNoGrid, kGridTemperature}}) {
    params.smoke.channel = smoke;
    params.fire.channel = fire;
    const auto volume = make_volume(frame, params);
    FireAndSmoke gas;
    fire_and_smoke(gas, *volume, points,
                   {.linear_fire = true, .linear_smoke = true, .colors = false});
    alignas(64) float shadow[kBlock];
    shade_extinction(shadow, *volume, points);
    for (int i = 0; i < points.n; ++i)
      EXPECT_EQ(shadow[i], gas.fire_extinction[i] + gas.smoke_extinction[i]) << i << smoke << fire;
  }
}

// Noise moves points without compressing the gas, stays in the domain while the grid moves, and
// does not move old gas.
TEST(DetailNoise, MovesPointsAlongACurl) {
  DensityFrame frame({30, 30, 30}, [](int, int, int) { return 1.0f; });
  VolumeParams params = smoke_params();
  params.smoke.noise = {.percent = 40, .scale_a = 8, .scale_b = 20, .gain = 0.6, .period = 2};
  params.seconds = 0.7;
  const auto volume = make_volume(frame, params);
  EXPECT_NEAR(volume->smoke.noise.octaves, 1 + std::log2(20.0 / 8), 1e-6);
  const auto moved_in = [](const RenderVolume& in, const Vec3f& p) {
    Points q;
    displace(q, in, in.smoke, points_at({p}));
    return Vec3f(q.x[0], q.y[0], q.z[0]) - p;
  };
  const auto moved = [&](const Vec3f& p) { return moved_in(*volume, p); };
  // The kernels against the noise one slope at a time.
  const DetailNoise& noise = volume->smoke.noise;
  NoiseParams bands;
  bands.frequency = noise.frequency;
  bands.amplitude = noise.amplitude;
  bands.bands = noise.octaves;
  bands.persistence = noise.gain;
  const auto slope = [&](int potential, int axis, const Vec3f& p) {
    const Vec3f apart = Vec3f(123.456f, 234.567f, 345.678f) * static_cast<float>(potential - 1);
    return fractal3D(*noise.noise, bands, p + apart, axis);
  };
  for (const Vec3f& p : {Vec3f(12, 13, 14), Vec3f(0.1f, 28.7f, 3.3f), Vec3f(-40, -3.2f, 500)}) {
    const Vec3f d(slope(3, 2, p) - slope(2, 3, p), slope(1, 3, p) - slope(3, 1, p),
                  slope(2, 1, p) - slope(1, 2, p));
    EXPECT_LT(length(moved(p) - d), 2e-4f) << p[0];
  }

  // A point of a block moves as it does alone, whether the block lies in one cell of the noise, in
  // a few, or in many.
  for (const float step : {0.01f, 0.6f, 1.3f, 37.0f}) {
    Points block, q;
    block.n = kBlock;
    for (int i = 0; i < kBlock; ++i) {
      block.x[i] = 3 + step * static_cast<float>(i);
      block.y[i] = 60 - 0.7f * block.x[i];
      block.z[i] = 0.4f * block.x[i] - 20;
    }
    displace(q, *volume, volume->smoke, block);
    for (int i = 0; i < kBlock; ++i) {
      const Vec3f p(block.x[i], block.y[i], block.z[i]);
      EXPECT_EQ(Vec3f(q.x[i], q.y[i], q.z[i]) - p, moved(p)) << step << " " << i;
    }
  }

  // In a flow with a vorticity of 3 per second points move three times as far. The factor is at
  // most the frame rate, and 0 in the outermost layer.
  add_velocity(frame, {30, 30, 30}, [](int axis, int j) {
    return axis == 0 ? 3 * 0.02f * static_cast<float>(j) : 0.0f;
  });
  for (const float rate : {25.0f, 2.0f}) {
    params.frames_per_second = rate;
    const auto shearing = make_volume(frame, params);
    for (const auto& [p, share] : {std::pair(Vec3f(12, 13, 14), 1.0f),
                                   {{0.5f, 13, 14}, 0.5f},
                                   {{12, 13, 28.75f}, 0.25f},
                                   {{12, 0, 14}, 0.0f}}) {
      const Vec3f d = moved_in(*shearing, p);
      EXPECT_LT(length(d - moved(p) * (share * std::min(rate, 3.0f))), 1e-4f) << rate << share;
    }
  }
  // With twice the period the same noise comes at twice the time, whatever was shown before. With a
  // period of 0 it never changes.
  const auto tile_at = [](DetailNoise& made, double period, double time) {
    set_detail_noise(made, {.percent = 1, .period = period}, 1, time);
    return (*made.tile)(1, 2, 3);
  };
  DetailNoise fast, slow, still;
  const float first = tile_at(still, 0, 9);
  EXPECT_EQ(first, tile_at(fast, 1, 0));
  for (const double time : {5.25, 1.5}) {
    EXPECT_EQ(tile_at(fast, 1, time), tile_at(slow, 2, 2 * time)) << time;
    EXPECT_NE(tile_at(fast, 1, time), first);
    DetailNoise alone;
    EXPECT_EQ(tile_at(alone, 1, time), tile_at(fast, 1, time)) << time;
  }

  const Vec3f before = moved({12, 13, 14});
  volume->gridOffset = {2, -3, 1};
  EXPECT_LT(length(moved({10, 16, 13}) - before), 1e-5f);
  for (FieldHandle* f : {&volume->advectedCoords.x, &volume->advectedCoords.y,
                         &volume->advectedCoords.z, &volume->advectedCoords.age}) {
    *f = acquire_field({30, 30, 30});
    std::fill_n((*f)->data(), (*f)->count(), 12.0f);
  }
  EXPECT_EQ(length(moved({12, 13, 14})), 0);
}

}  // namespace nbx
