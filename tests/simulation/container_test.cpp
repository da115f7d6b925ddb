// The adaptive container: a box that follows the gas, with nearly the result of the whole domain.
#include "math/field_reductions.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/health.h"
#include "simulation/scene_run.h"

namespace nbx {
namespace {

// A puff of hot smoke in an open domain, from a source in the first frame.
struct PuffRun : test::BoxRun {
  PuffRun() {
    scene.cells = {32, 48, 32};
    scene.source = {{14, 10, 14}, {17, 13, 17}};
    scene.frames_of_source = 1;
    scene.settings = [this](StepSettings& s) {
      s.domain.face_closed = {0, 0, floor ? 1 : 0, 0, 0, 0};
      s.params.fit_to_walls = fit_to_walls;
      s.params.channel_params[kTemperature].buoyancy = 20;
      for (const int key : {kDensity, kTemperature})
        s.params.channel_params[key].box_threshold = threshold;
      s.params.velocity_box_threshold = speed_threshold;
      s.params.noise.amplitude = static_cast<float>(noise);
      s.params.noise.frequency = 0.2f;
      s.params.noise.bands = 2;
    };
  }
  const IntBox& box() { return sim.domain.active_box; }
  // The density in domain cells.
  float density(const Vec3i& p) {
    if (!box().contains(p)) return 0;
    const Vec3i i = p - box().lo + Vec3i(1, 1, 1);
    return channel(kDensity)(i[0], i[1], i[2]);
  }

  bool floor = false, fit_to_walls = true;
  double threshold = 0.001, speed_threshold = 10, noise = 0;
};

TEST(Container, HoldsTheContentAndNothingElse) {
  PuffRun run;
  run.scene.frames_of_source = 0;
  run.start();
  run.frames(2);
  EXPECT_TRUE(run.box().empty());

  run.scene.frames_of_source = 1;
  run.frames(1);
  EXPECT_TRUE(run.box().contains({14, 10, 14}) && run.box().contains({17, 13, 17}));
  EXPECT_LT(run.box().size()[1], 12);
  run.frames(12);
  EXPECT_GT(run.box().hi[1], 18) << "the box rises with the gas";
  // The outermost cells of the box have no content: nothing is cut off.
  const Health health = measure_health(run.sim);
  const IntBox content = min_bbox(run.channel(kDensity), static_cast<float>(0.001));
  for (int a = 0; a < 3; ++a) {
    EXPECT_GT(content.lo[a], 1);
    EXPECT_LT(content.hi[a], run.box().size()[a]);
  }
  EXPECT_EQ(health.touches, (std::array<bool, 6>{}));
  EXPECT_GT(health.kinetic_energy, 0);
  EXPECT_LT(health.largest_divergence, 0.01 * 1.01);
}

TEST(Container, HoldsWhatIsPushedAndWhatTheSceneKeeps) {
  PuffRun run;
  run.scene.object.amounts = {};
  run.scene.object.direction = {0, 1, 0};
  run.start();
  EXPECT_EQ(run.box(), (IntBox{{14, 11, 14}, {17, 14, 17}})) << "the faces with a velocity";
  run.scene.keep = {{2, 30, 2}, {4, 33, 4}};
  run.frames(1);
  EXPECT_TRUE(run.box().contains({2, 30, 2}) && run.box().contains({4, 33, 4}));
  run.scene.keep = {};
  run.frames(1);
  EXPECT_FALSE(run.box().contains({4, 30, 4}));
}

TEST(Container, WallsAreReachedOnlyByContent) {
  PuffRun run;
  run.floor = true;
  run.start();
  EXPECT_EQ(run.box().lo[1], 0) << "a closed face is in the box as soon as there is content";
  EXPECT_GT(run.box().lo[0], 0);

  PuffRun loose;
  loose.floor = true;
  loose.fit_to_walls = false;
  loose.start();
  EXPECT_GT(loose.box().lo[1], 0);

  PuffRun corner;
  corner.scene.source = {{0, 0, 0}, {3, 3, 3}};
  corner.start();
  corner.frames(1);
  EXPECT_EQ(corner.box().lo, Vec3i(0, 0, 0));
  const std::array<bool, 6> touched = measure_health(corner.sim).touches;
  EXPECT_TRUE(touched[0] && touched[2] && touched[4]);
  EXPECT_FALSE(touched[1] || touched[3] || touched[5]);
}

// A domain eight times as large costs neither memory nor work: same box, same bits.
TEST(Container, EmptySpaceIsFree) {
  PuffRun small, large;
  large.scene.cells = {64, 96, 64};
  for (PuffRun* run : {&small, &large}) {
    run->noise = 0.1;
    run->start();
    run->frames(8);
  }
  EXPECT_LT(small.box().hi[0], 31) << "the puff reached the small domain's side";
  EXPECT_EQ(large.box(), small.box());
  EXPECT_TRUE(test::same_bits(large.channel(kDensity), small.channel(kDensity)));
}

// Two runs from one state of a rising puff: in a box that holds all air above some speed, and in
// the whole domain. Outside of the box the air counts as resting, though it moves by up to 0.2
// cells in the four frames. The gas moves by several cells, so the results differ by a few percent
// of that.
TEST(Container, FollowsWhatTheWholeDomainGives) {
  PuffRun seed;
  seed.threshold = -1;  // every cell counts
  seed.start();
  seed.sim.apply_box(seed.sim.domain.domain_box);
  seed.frames(6);
  SimFrame state;
  seed.sim.fill_frame(state, seed.sim.sink.cached_channels, seed.time);

  PuffRun box, whole;
  whole.threshold = -1;
  box.speed_threshold = 0.05;
  for (PuffRun* run : {&box, &whole}) {
    run->scene.frames_of_source = 0;
    ASSERT_TRUE(run->sim.load_state(run->scene, state));
    run->frames(4);
  }
  EXPECT_EQ(whole.box(), whole.sim.domain.domain_box);
  EXPECT_LT(box.channel(kDensity).count(), whole.channel(kDensity).count() / 2);
  double difference = 0, mass = 0, moved = 0;
  test::each_cell({32, 48, 32}, 0, [&](int x, int y, int z) {
    const Vec3i p{x, y, z};
    difference += std::fabs(box.density(p) - whole.density(p));
    moved += std::fabs(seed.density(p) - whole.density(p));
    mass += whole.density(p);
  });
  EXPECT_GT(moved, 0.5 * mass);
  EXPECT_LT(difference, 0.02 * moved);
}

// The box grows before expanding gas is pushed, and the outflow of the source is its volume.
TEST(Container, ExpansionGrowsTheBoxAndGivesItsVolume) {
  PuffRun still, boom;
  boom.scene.object.amounts[kExpansion] = 40;  // per second: 1.6 times the cells' volume in a frame
  for (PuffRun* run : {&still, &boom}) {
    run->scene.frames_of_source = 2;
    run->start();
    run->frames(1);
  }
  for (int a = 0; a < 3; ++a) EXPECT_GT(boom.box().size()[a], still.box().size()[a]);

  // The flux through a box around the source: the sum over its cells.
  FluidSystem& fluid = boom.sim.fluid();
  const Vec3i low = boom.scene.source.lo - boom.box().lo - Vec3i(1, 1, 1);
  Field<float> in;
  in.resize(boom.channel(kDensity).dims());
  NegDivergence(in, fluid.U().read_cpu(), fluid.V().read_cpu(), fluid.W().read_cpu(), nullptr, 1);
  double flux = 0;
  test::each_cell({8, 8, 8}, 0, [&](int i, int j, int k) {
    flux -= static_cast<double>(in(low[0] + i, low[1] + j, low[2] + k));
  });
  const double given = 64 * 40 * boom.sim.domain.dx;
  EXPECT_NEAR(flux, given, 0.01 * given) << "the projection's tolerance is 0.01 per cell";

  // It ends with its source. A run from a state gets nothing from sources before it.
  boom.frames(1);
  EXPECT_LT(measure_health(boom.sim).largest_divergence, 0.1);
  SimFrame state;
  boom.sim.fill_frame(state, boom.sim.sink.cached_channels, boom.time);
  PuffRun loaded;
  loaded.scene.object.amounts[kExpansion] = 40;
  loaded.scene.frames_of_source = 1;
  ASSERT_TRUE(loaded.sim.load_state(loaded.scene, state));
  loaded.frames(1);
  EXPECT_LT(measure_health(loaded.sim).largest_divergence, 0.1);
}

}  // namespace
}  // namespace nbx
