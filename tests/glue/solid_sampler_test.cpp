#include "C4D/solid_sampler.h"

#include "glue/scene_run.h"
#include "math/mfield_operations.h"

namespace nbx {
namespace {

using test::SceneRun;

/// A box that moves along x by `way` units a frame, for 20 frames.
std::string mover(const std::string& size, const std::string& from, const std::string& to) {
  return R"({"type": "cube", "name": "s", "parameters": {"size": )" + size +
         R"(}, "tags": [{"type": "emitter", "parameters": {"solid": true}}],
            "keyframes": {"position": [[0, )" +
         from + "], [20, " + to + "]]}}";
}

std::string volume(const std::string& size, const std::string& closed,
                   const std::string& more = "") {
  return R"({"type": "volume", "name": "v", "parameters": {"size": )" + size +
         R"(, "voxel_size": 1, "simulate_density": true)" + more + closed + "}}";
}

const std::string kClosedButRight = R"(, "closed_x_min": true, "closed_y_min": true,
    "closed_y_max": true, "closed_z_min": true, "closed_z_max": true)";
/// Gas in all of the domain.
const std::string kGas = R"(, {"type": "cube", "parameters": {"size": [90, 90, 90]},
    "tags": [{"type": "emitter", "parameters": {"density": 1}}]}, )";

TEST(SolidSampler, ARestingSolidHasNoVelocityAtAll) {
  // Two frames at one place after a move.
  SceneRun run(volume("[24, 24, 24]", "") + kGas + R"({"type": "sphere", "name": "s",
      "rotation": [33, 12, 5], "parameters": {"radius": 5},
      "tags": [{"type": "emitter", "parameters": {"solid": true}}],
      "keyframes": {"position": [[0, [0, 0, 0]], [2, [3.3, 1, 0.7]]]}})");
  for (const bool moves : {false, true, false, false}) {
    run.frame();
    ASSERT_TRUE(run.solids.phi);
    const float u = m_infnorm(*run.solids.u), w = m_infnorm(*run.solids.w);
    if (moves) {
      EXPECT_NEAR(u, 1.65f * 0.25f, 1e-4f) << "1.65 units a frame in m/s";
      EXPECT_NEAR(w, 0.35f * 0.25f, 1e-4f);
      EXPECT_LT(min(run.solids.w->cpu_field()), -0.08f) << "the grid's z runs the other way";
    } else {
      EXPECT_EQ(u, 0);
      EXPECT_EQ(m_infnorm(*run.solids.v), 0);
      EXPECT_EQ(w, 0);
    }
  }
}

TEST(SolidSampler, AnotherNumberOfPointsCountsAsRest) {
  const test::LogCapture log;
  SceneRun run(volume("[24, 24, 24]", "") + kGas + R"({"type": "sphere", "name": "s",
      "parameters": {"radius": 5, "segments": 8},
      "tags": [{"type": "emitter", "parameters": {"solid": true}}],
      "keyframes": {"position": [[0, [0, 0, 0]], [9, [9, 0, 0]]]}})");
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
  SceneRun run(volume("[40, 16, 16]", kClosedButRight) + kGas +
               mover("[20, 30, 30]", "[-20, 0, 0]", "[-8, 0, 0]"));
  double out = 0, swept = 0;
  for (int frame = 0; frame < 12; ++frame) {
    run.frame();
    const SimSettings& s = run.sim.settings;
    ASSERT_EQ(s.active_box.size(), Vec3i(40, 16, 16));
    if (frame == 0) continue;  // the piston counts as resting until it has been seen
    const Field<float>& U = run.sim.fluid().U().cpu_field();
    double flux = 0;
    for (int k = 1; k <= 16; ++k)
      for (int j = 1; j <= 16; ++j) flux += U(41, j, k);
    out += flux * s.dt / s.dx;  // cells
    swept += 0.6 * 16 * 16;
  }
  EXPECT_NEAR(out, swept, 0.05 * swept);
}

// A jet blows gas against a wall of one voxel across the domain for 100 frames.
TEST(SolidSampler, NoGasCrossesAWallOfOneVoxel) {
  SceneRun run(volume("[28, 10, 10]", R"(, "closed_y_min": true, "max_substeps": 2)") +
               R"(, {"type": "sphere", "position": [-8, 0, 0], "parameters": {"radius": 3},
        "tags": [{"type": "emitter", "parameters": {"density": 1, "direction": [100, 0, 0]}}]},
      {"type": "cube", "name": "s", "position": [0.5, 0, 0], "parameters":
       {"size": [1, 40, 40]}, "tags": [{"type": "emitter", "parameters": {"solid": true}}]})");
  for (int frame = 0; frame < 100; ++frame) run.frame();
  const Field<float>& density = run.density();
  const int face = 14 - run.sim.settings.active_box.lo[0] + 1;  // the wall's cell
  double before = 0, beyond = 0;
  test::each_cell(density.dims(), 0,
                  [&](int i, int j, int k) { (i <= face ? before : beyond) += density(i, j, k); });
  EXPECT_GT(before, 200);
  EXPECT_EQ(beyond, 0);
}

}  // namespace
}  // namespace nbx
