// The velocity of an up-resolution run: the coarse flow, finer, with noise that travels with it.
#include <filesystem>

#include "cache/cache_registry.h"
#include "math/field_reductions.h"
#include "math/field_resampling.h"
#include "math/interpolation.h"
#include "simulation/fluid/curl_noise.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/mac.h"
#include "simulation/scene_run.h"
#include "simulation/upres/distortion.h"
#include "simulation/vorticity.h"

namespace nbx {
namespace {

using test::each_cell;

Jacobian product(const Jacobian& a, const Jacobian& b) {
  Jacobian c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
  return c;
}

// Matrices that are made from their eigenvalues: L U with unit diagonals, and its inverse, around a
// diagonal or around a block that turns by an angle and scales.
TEST(Distortion, IsThatOfTheEigenvalues) {
  const Jacobian L{{{1, 0, 0}, {0.4, 1, 0}, {-0.3, 0.2, 1}}};
  const Jacobian inverse_L{{{1, 0, 0}, {-0.4, 1, 0}, {0.38, -0.2, 1}}};
  const auto around = [&](const Jacobian& D) { return product(product(L, D), inverse_L); };
  const auto diagonal = [](double a, double b, double c) {
    return Jacobian{{{a, 0, 0}, {0, b, 0}, {0, 0, c}}};
  };
  const auto turned = [](double scale, double angle, double third) {
    const double c = scale * std::cos(angle), s = scale * std::sin(angle);
    return Jacobian{{{c, -s, 0}, {s, c, 0}, {0, 0, third}}};
  };
  const std::tuple<Jacobian, double> cases[] = {
      {diagonal(1, 1, 1), 1},   {diagonal(2, 1, 1), 2},     {diagonal(1, 0.25, 1), 4},
      {diagonal(-3, 1, 2), 3},  {diagonal(1, 1, 0), 1e300}, {diagonal(1e-4, 0, -1e-4), 10},
      {turned(1, 0.7, 1), 1},   {turned(1.5, 2, 1), 1.5},   {turned(0.4, 1, 1), 2.5},
      {turned(1.2, 0.1, -5), 5}};
  for (const auto& [D, wanted] : cases)
    for (const Jacobian& J : {D, around(D)}) {
      if (wanted > 1e9)
        EXPECT_GT(distortion(J), 1e6);
      else
        EXPECT_NEAR(distortion(J), wanted, 1e-5 * wanted);
    }
}

// One of three neighbors lies far off: the derivative is that of the other side.
TEST(Distortion, TakesTheSmallestDifference) {
  Field<float> f(5, 3, 3);
  each_cell(f.dims(), 0, [&](int i, int j, int k) { f(i, j, k) = i == 4 ? 90 : 2 * i + 3 * j; });
  const Jacobian J = smallest_differences({&f, &f, &f}, f.index(3, 1, 1));
  EXPECT_EQ(J[1], (std::array<double, 3>{2, 3, 0}));
  f(2, 1, 1) = -90;  // both sides: the central one would be the largest but for the signs
  f(4, 1, 1) = 100;
  EXPECT_EQ(smallest_differences({&f, &f, &f}, f.index(3, 1, 1))[0][0], 91);
}

Vec3f at(TextureCoordinates& tex, int i, int j, int k) {
  Vec3f p;
  for (int a = 0; a < 3; ++a) p[a] = tex.all()[a]->read_cpu()(i, j, k);
  return p;
}

TEST(TextureCoordinates, StayInTheirCellsWhileTheBoxMoves) {
  TextureCoordinates tex;
  tex.cover({{4, 0, -2}, {8, 3, 1}});
  EXPECT_EQ(at(tex, 0, 0, 0), Vec3f(3, -1, -3)) << "at rest";
  tex.tex_y.write_cpu()(3, 2, 1) = 50;  // domain cell (6, 1, -2)
  tex.cover({{5, -1, -2}, {12, 3, 2}});
  EXPECT_EQ(tex.tex_x.dims(), Vec3i(10, 7, 7));
  EXPECT_EQ(at(tex, 2, 3, 1), Vec3f(6, 50, -2)) << "kept";
  EXPECT_EQ(at(tex, 9, 0, 6), Vec3f(13, -2, 3)) << "new, at rest";
  EXPECT_EQ(at(tex, 6, 2, 2), Vec3f(10, 0, -1)) << "the first new one along x";
  tex.cover({});
  EXPECT_TRUE(tex.empty());
}

// A stretch of 2 and more goes back to rest, and so does what isn't a number.
TEST(TextureCoordinates, StartAgainWhereTheyAreDistorted) {
  for (const auto& [slope, again] : {std::pair{1.99f, false}, {2.0f, true}, {NAN, true}}) {
    TextureCoordinates tex;
    tex.cover({{1, 1, 1}, {6, 6, 6}});
    Field<float>& x = tex.tex_x.write_cpu();
    each_cell(x.dims(), 0, [&, s = slope](int i, int j, int k) { x(i, j, k) = s * i; });
    tex.regen_distorted();
    EXPECT_EQ(at(tex, 3, 4, 5)[0], again ? 3 : 3 * slope) << slope;
    EXPECT_EQ(at(tex, 0, 4, 5), at(tex, 1, 4, 5)) << "the border follows";
  }
}

// The quick test for cells that can't be distorted must not change the result.
TEST(TextureCoordinates, StartAgainInExactlyTheDistortedCells) {
  TextureCoordinates tex;
  tex.cover({{0, 0, 0}, {36, 9, 8}});
  const Vec3i n = tex.tex_x.dims();
  std::array<Field<float>, 3> before;
  std::array<const Field<float>*, 3> map{};
  for (int a = 0; a < 3; ++a) {
    before[a] = test::random_field(n, a + 1);
    Field<float>& t = tex.all()[a]->write_cpu();
    each_cell(n, 0, [&](int i, int j, int k) { t(i, j, k) += 0.01f * i * before[a](i, j, k); });
    before[a].copy(t);
    map[a] = &before[a];
  }
  test::everywhere([&] {
    for (int a = 0; a < 3; ++a) tex.all()[a]->write_cpu().copy(before[a]);
    tex.regen_distorted();
    int again = 0, kept = 0;
    each_cell(n, 1, [&](int i, int j, int k) {
      const bool distorted = distortion(smallest_differences(map, before[0].index(i, j, k))) >= 2;
      ++(distorted ? again : kept);
      const Vec3f rest(i - 1, j - 1, k - 1);
      const Vec3f same(before[0](i, j, k), before[1](i, j, k), before[2](i, j, k));
      ASSERT_EQ(at(tex, i, j, k), distorted ? rest : same) << i;
    });
    EXPECT_GT(again, 100);
    EXPECT_GT(kept, 300);
  });
}

// Gas at rest keeps its coordinates to the bit. A wind of one cell a frame moves them by one cell.
TEST(TextureCoordinates, TravelWithTheGas) {
  TextureCoordinates tex;
  tex.cover({{0, 0, 0}, {20, 5, 5}});
  const Vec3i n = tex.tex_x.dims();
  MField U(kCpu, n + Vec3i(1, 0, 0)), V(kCpu, n + Vec3i(0, 1, 0)), W(kCpu, n + Vec3i(0, 0, 1));
  for (MField* f : {&U, &V, &W}) f->zero();
  AdvectionParams params;
  params.velocity = {&U, &V, &W};
  params.dt = 0.04;
  params.dx = 0.1;
  tex.advect(params);
  tex.regen_distorted();
  each_cell(n, 1,
            [&](int i, int j, int k) { ASSERT_EQ(at(tex, i, j, k), Vec3f(i - 1, j - 1, k - 1)); });
  set(U.write_cpu(), 2.5f);
  for (int frame = 1; frame <= 4; ++frame) {
    tex.advect(params);
    EXPECT_EQ(at(tex, 15, 0, 3), at(tex, 15, 1, 3)) << "the border follows";
    tex.regen_distorted();
    EXPECT_NEAR(at(tex, 15, 3, 3)[0], 14 - frame, 1e-4);
    EXPECT_NEAR(at(tex, 15, 3, 3)[1], 2, 1e-5);
  }
}

/// A coarse frame of a random flow.
struct Coarse {
  explicit Coarse(const Vec3i& cells, unsigned seed = 1) : faces(cells + Vec3i(2, 2, 2)) {
    faces.randomize(seed);
    low.box = {{2, 0, 1}, Vec3i(2, 0, 1) + cells - Vec3i(1, 1, 1)};
    for (int axis = 0; axis < 3; ++axis) {
      low.velocity[axis] = acquire_field();
      low.velocity[axis]->copy(faces.face(axis));
    }
    tex.cover(low.box);
    for (MField* f : tex.all()) {
      Field<float>& t = f->write_cpu();
      each_cell(t.dims(), 0,
                [&](int i, int j, int k) { t(i, j, k) += 0.3f * std::sin(i * j + k); });
    }
  }
  test::Mac faces;
  LowFrame low;
  TextureCoordinates tex;
};

constexpr double kDx = 0.1, kFrame = 0.04;

/// What UpresDetail adds to a velocity of 0.
void add_detail(test::Mac& fine, Coarse& coarse, const SolverParams& params) {
  std::array<MField, 3> velocity;
  for (int axis = 0; axis < 3; ++axis) {
    velocity[axis].resize(kCpu, fine.face(axis).dims());
    velocity[axis].zero();
  }
  UpresDetail().add(velocity, coarse.low, coarse.tex, params, kDx, kFrame);
  for (int axis = 0; axis < 3; ++axis) fine.face(axis).copy(velocity[axis].read_cpu());
}

/// The same, cell by cell, from the operators.
void add_plain_detail(test::Mac& fine, Coarse& coarse, const SolverParams& params) {
  const int f = params.upres_factor;
  const Vec3i n = coarse.low.dims(), m = (n - Vec3i(2, 2, 2)) * f + Vec3i(2, 2, 2);
  Field<float> w[4], map(m[0], m[1], m[2]), psi(m[0], m[1], m[2]);
  for (Field<float>& field : w) field.resize(n);
  test::Mac& u = coarse.faces;
  VelocityCurl(w[0], w[1], w[2], w[3], u.U, u.V, u.W, kDx);
  each_cell(n, 0, [&](int i, int j, int k) { w[3](i, j, k) = std::min(w[3](i, j, k), 25.0f); });
  set(map, 0);
  scale_up_center(map, w[3], f);
  WaveletNoise noise;
  advance_tile(noise, 0, true, true);
  NoiseParams p;
  p.bands = static_cast<float>(static_cast<int>(std::log2(f)) + params.upres_extra_bands);
  p.frequency = 1.0f / static_cast<float>(1 << params.upres_extra_bands);
  p.amplitude = static_cast<float>(params.upres_noise_amount) * f / p.frequency;
  p.persistence = 0.5f;
  const float c = 0.5f / f - 0.5f + 1;
  const auto of = [&](int i) { return static_cast<float>(i - 1) / f + c; };
  each_cell(m, 1, [&](int i, int j, int k) {
    Vec3f place;
    for (int a = 0; a < 3; ++a)
      place[a] = sample_linear(coarse.tex.all()[a]->read_cpu(), of(i), of(j), of(k));
    psi(i, j, k) = fractal3D(noise, p, place, 0);
  });
  clamp_border(psi);
  add_curl_of_scaled(fine.U, fine.V, fine.W, psi, &map, 1);
}

TEST(UpresDetail, IsTheCurlOfNoiseInTheTextureCoordinates) {
  for (const auto& [factor, extra, cells] : {std::tuple{2, 0, Vec3i(9, 4, 5)},
                                             {3, 1, Vec3i(1, 6, 2)},
                                             {4, 2, Vec3i(7, 2, 3)},
                                             {8, 0, Vec3i(3, 3, 1)}}) {
    const int f = factor;
    SolverParams params;
    params.upres_factor = f;
    params.upres_extra_bands = extra;
    params.upres_noise_persistence = 0.5;
    Coarse coarse(cells);
    const Vec3i n = cells * f + Vec3i(2, 2, 2);
    test::Mac fine(n), plain(n), first(n);
    add_detail(first, coarse, params);
    add_plain_detail(plain, coarse, params);
    for (int axis = 0; axis < 3; ++axis)
      each_cell(n, 1, [&](int i, int j, int k) {
        ASSERT_NEAR(first.face(axis)(i, j, k), plain.face(axis)(i, j, k), 2e-4) << f;
      });
    test::everywhere([&] {
      add_detail(fine, coarse, params);
      EXPECT_TRUE(fine.same(first)) << f;
    });
    double largest = 0, fastest = 0;
    each_cell(n, 1, [&](int i, int j, int k) {
      const double out = double{fine.U(i + 1, j, k)} - fine.U(i, j, k) + fine.V(i, j + 1, k) -
                         fine.V(i, j, k) + fine.W(i, j, k + 1) - fine.W(i, j, k);
      largest = std::max(largest, std::abs(out));
      fastest = std::max(fastest, 1.0 * std::abs(fine.U(i, j, k)));
    });
    EXPECT_GT(fastest, 0.01);
    EXPECT_LT(largest, 1e-5 * fastest) << f;
  }
}

/// A coarse run of smoke in a cache, and the fine run over it.
struct TwoRuns {
  TwoRuns() {
    std::filesystem::create_directory(folder.file("coarse"));
    coarse.sim.sink.target_cache = getCache(folder.file("coarse"));
    for (test::BoxRun* run : {&coarse, &fine}) {
      run->scene.object.direction = {0, 2, 0};
      run->scene.source = {{5, 2, 5}, {9, 4, 9}};
      run->scene.settings = [](StepSettings& s) { s.params.velocity_box_threshold = 0.1; };
    }
    coarse.scene.cells = {15, 24, 15};
    refine(fine, 3);
  }
  void refine(test::BoxRun& run, int factor) {
    run.sim.params.upres = true;
    run.sim.params.upres_factor = factor;
    run.sim.source_cache = coarse.sim.sink.target_cache;
    run.scene.cells = coarse.scene.cells * factor;
    run.scene.source = refined(coarse.scene.source, factor);
    run.scene.settings = [factor, this](StepSettings& s) {
      s.domain.dx = 0.05 / factor;
      s.params.max_substeps = substeps;
      s.params.cfl = 0.1;
      s.params.upres_noise_amount = amount;
    };
  }
  void simulate_coarse(int frames) {
    coarse.sim.start(coarse.scene, coarse.time);
    for (int i = 0; i < frames; ++i) coarse.frames(1);
  }
  test::TemporaryFolder folder;
  test::BoxRun coarse, fine;
  double amount = 0.3;
  int substeps = 2;
};

TEST(UpresRun, WithoutNoiseMovesWithTheCoarseFlowToTheBit) {
  TwoRuns runs;
  runs.amount = 0;
  runs.simulate_coarse(4);
  Simulation3D& sim = runs.fine.sim;
  runs.fine.start();
  std::set<int> sizes;
  for (int frame = 0; frame < 4; ++frame) {
    runs.fine.frames(1);
    const LowFrame low = open_low_frame(sim.source_cache, frame);
    ASSERT_TRUE(low);
    ASSERT_EQ(sim.domain.active_box, refined(low.box, 3));
    sizes.insert(low.box.size()[1]);
    test::Mac wanted(sim.domain.center_dims());
    scale_up_west(wanted.U, *low.velocity[0], 3);
    scale_up_south(wanted.V, *low.velocity[1], 3);
    scale_up_low(wanted.W, *low.velocity[2], 3);
    for (int axis = 0; axis < 3; ++axis)
      each_cell(wanted.face(axis).dims(), 2, [&](int i, int j, int k) {
        ASSERT_EQ(sim.fluid().component(axis).read_cpu()(i, j, k), wanted.face(axis)(i, j, k));
      });
  }
  EXPECT_GT(sizes.size(), 1U) << "the box must change";
  EXPECT_GT(sum(runs.fine.channel(kDensity)), 0);
}

// The coordinates move in the first substep of a frame only, so they move for all of them.
TEST(UpresRun, CarriesTheNoiseOverWholeFrames) {
  std::vector<Field<float>> stored;
  for (const int substeps : {1, 3}) {
    TwoRuns runs;
    runs.substeps = substeps;
    runs.simulate_coarse(2);
    runs.fine.start();
    runs.fine.frames(3);
    float fastest = 0;  // in coarse cells
    for (const int frame : {1, 2}) {
      const LowFrame low = open_low_frame(runs.fine.sim.source_cache, frame);
      fastest += infnorm(*low.velocity[1]) * 0.04f / 0.05f;
    }
    EXPECT_EQ(runs.fine.sim.clock.step_index, substeps);
    SimFrame state;
    runs.fine.sim.fill_frame(state, {kTexture}, runs.fine.time);
    stored.push_back(test::copy_of(*state.grid(kGridCoordinateY)));
    const Field<float>& y = stored.back();
    float moved = 0;
    each_cell(y.dims(), 1, [&](int i, int j, int k) {
      moved = std::max(moved, std::abs(y(i, j, k) - y(i, 1, 1) - (j - 1)));
    });
    EXPECT_GT(moved, 0.5f * fastest);
    EXPECT_LT(moved, 1.01f * fastest);
  }
  EXPECT_TRUE(test::same_bits(stored[0], stored[1]));
}

// A frame that the source lacks changes nothing about the velocity, and the gas keeps moving.
TEST(UpresRun, KeepsTheVelocityWhereTheSourceHasAGap) {
  TwoRuns runs;
  runs.simulate_coarse(4);
  BFS& source = *runs.fine.sim.source_cache;
  ASSERT_TRUE(source.finish_writes());
  source.removeAllSlots();
  ASSERT_TRUE(std::filesystem::remove(source.fileName(3, 0)));
  runs.fine.start();
  runs.fine.frames(3);
  Simulation3D& sim = runs.fine.sim;
  Field<float> before, density;
  before.copy(sim.fluid().V().read_cpu());
  density.copy(runs.fine.channel(kDensity));
  const test::LogCapture log;
  runs.fine.frames(1);
  EXPECT_NE(log.text().find("Missing velocity cache in upres mode"), std::string::npos);
  EXPECT_TRUE(test::same_bits(before, sim.fluid().V().read_cpu()));
  EXPECT_FALSE(test::same_bits(density, runs.fine.channel(kDensity)));
}

// The state holds the texture coordinates: without them the noise would start again.
TEST(UpresRun, ContinuesAndIsTheSameForAnyNumberOfThreads) {
  TwoRuns runs;
  runs.simulate_coarse(6);
  SimFrame state;
  runs.fine.start();
  runs.fine.frames(3);
  std::set<int> all;
  for (int key = kVelocity; key <= kSecondVelocity; ++key) all.insert(key);
  runs.fine.sim.fill_frame(state, all, runs.fine.time);
  runs.fine.frames(3);

  for (const bool with_texture : {true, false}) {
    const test::ThreadCount threads(3);
    test::BoxRun again;
    again.scene.object = runs.fine.scene.object;
    runs.refine(again, 3);
    again.time = state.frameTime;
    if (!with_texture) state.grids.erase(kGridCoordinateX);
    ASSERT_TRUE(again.sim.load_state(again.scene, state));
    again.frames(3);
    EXPECT_EQ(test::same_bits(again.channel(kDensity), runs.fine.channel(kDensity)), with_texture);
  }
}

}  // namespace
}  // namespace nbx
