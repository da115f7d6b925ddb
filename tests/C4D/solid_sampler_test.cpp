#include "C4D/sources/solid_sampler.h"

#include "C4D/scene_run.h"
#include "math/mfield_operations.h"

namespace nbx {
namespace {

using test::SceneRun;

TEST(SolidSampler, ARestingSolidHasNoVelocityAtAll) {
  // Two frames at one place after a move.
  SceneRun run("solid_at_rest.json");
  for (const bool moves : {false, true, false, false}) {
    run.frame();
    ASSERT_TRUE(run.solids.phi);
    const float u = m_infnorm(*run.solids.u), w = m_infnorm(*run.solids.w);
    if (moves) {
      EXPECT_NEAR(u, 1.65f * 0.25f, 1e-4f) << "1.65 units a frame in m/s";
      EXPECT_NEAR(w, 0.35f * 0.25f, 1e-4f);
      EXPECT_LT(min(run.solids.w->read_cpu()), -0.08f) << "the grid's z runs the other way";
    } else {
      EXPECT_EQ(u, 0);
      EXPECT_EQ(m_infnorm(*run.solids.v), 0);
      EXPECT_EQ(w, 0);
    }
  }
}

TEST(SolidSampler, AnotherNumberOfPointsCountsAsRest) {
  const test::LogCapture log;
  SceneRun run("remeshed_solid.json");
  constexpr std::int32_t kSegments = 1004;  // of the sphere
  for (const int segments : {8, 8, 11}) {
    run.object("s").GetDataInstance().SetLong(kSegments, segments);
    run.frame();
  }
  EXPECT_EQ(m_infnorm(*run.solids.u), 0);
  run.frame();
  EXPECT_EQ(log.count("WARNING: solid vertex count mismatch: prev="), 1);
  EXPECT_GT(m_infnorm(*run.solids.u), 0.2f) << "it is known again";
}

// A piston fills the left end of a box that is open on the right alone, and moves to the right by
// 0.6 units a frame: what leaves is what it sweeps.
TEST(SolidSampler, APistonPushesOutWhatItSweeps) {
  SceneRun run("piston.json");
  double out = 0, swept = 0;
  for (int frame = 0; frame < 12; ++frame) {
    run.frame();
    ASSERT_EQ(run.sim.domain.active_box.size(), Vec3i(40, 16, 16));
    if (frame == 0) continue;  // the piston counts as resting until it has been seen
    const Field<float>& U = run.sim.fluid().U().read_cpu();
    double flux = 0;
    for (int k = 1; k <= 16; ++k)
      for (int j = 1; j <= 16; ++j) flux += U(41, j, k);
    out += flux * run.sim.clock.dt / run.sim.domain.dx;  // cells
    swept += 0.6 * 16 * 16;
  }
  EXPECT_NEAR(out, swept, 0.05 * swept);
}

// A jet blows gas against a wall of one voxel across the domain for 100 frames.
TEST(SolidSampler, NoGasCrossesAWallOfOneVoxel) {
  SceneRun run("jet_and_wall.json");
  for (int frame = 0; frame < 100; ++frame) run.frame();
  const Field<float>& density = run.density();
  const int face = 14 - run.sim.domain.origin()[0];  // the wall's cell
  double before = 0, beyond = 0;
  test::each_cell(density.dims(), 0,
                  [&](int i, int j, int k) { (i <= face ? before : beyond) += density(i, j, k); });
  EXPECT_GT(before, 200);
  EXPECT_EQ(beyond, 0);
}

}  // namespace
}  // namespace nbx
