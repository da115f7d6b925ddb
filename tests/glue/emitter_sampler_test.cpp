#include "C4D/emitter_sampler.h"

#include "C4D/scene_settings.h"
#include "glue/test_document.h"
#include "math/field_reductions.h"
#include "support/support.h"

namespace nbx {
namespace {

// A tetrahedron of edge 4 whose outer sides run clockwise, seen from outside, as the host has them.
const char* const kTetrahedron = R"("points": [[0, 0, 0], [4, 0, 0], [0, 4, 0], [0, 0, 4]],
    "polygons": [[0, 2, 1], [0, 1, 3], [0, 3, 2], [1, 2, 3]])";

std::string volume(const std::string& parameters = "") {
  return R"({"type": "volume", "name": "v",
             "parameters": {"size": [60, 20, 20], "simulate_density": true)" +
         parameters + "}}";
}

std::string scene(const std::string& mesh, const std::string& emitter,
                  const std::string& volume_parameters = "") {
  return volume(volume_parameters) + R"(, {"type": "mesh", "name": "m", )" + mesh +
         R"(, "tags": [{"type": "emitter", "parameters": {)" + emitter + "}}]}";
}

/// A simulation in the domain of a document's volume, as a run makes it, without forces.
class Sampling : private SceneEvaluator {
 public:
  explicit Sampling(const std::string& objects)
      : document_(objects), volume_(document_.object("v")), emitters(volume_) {
    read_run_settings(sim_.settings, volume_);
    sim_.settings.sim_time.length = {1, 25};
    sim_.settings.frame_duration = 0.04;
    sim_.init_state(*this);
  }

  /// The density after one more frame.
  const Field<float>& frame() {
    sim_.update(*this, time_, nullptr);
    return density();
  }
  const Field<float>& density() { return sim_.channel_field(kDensity)->cpu_field(); }
  /// In world coordinates; 0 outside of the simulated box.
  float density_at(const Vec3d& world) {
    const Vec3d at = sim_.settings.world_to_grid(world);
    const IntBox& box = sim_.settings.active_box;
    const Vec3i cell(std::lround(at[0]), std::lround(at[1]), std::lround(at[2]));
    const Vec3i i = cell - box.lo + Vec3i(1, 1, 1);
    return box.contains(cell) ? density()(i[0], i[1], i[2]) : 0.0f;
  }

 private:
  void read_settings(Simulation3D& sim, double dt) override {
    read_step_settings(sim.settings, volume_, dt);
    sim.settings.channel_params[kDensity].buoyancy = 0;
    sim.settings.channel_params[kTemperature].buoyancy = 0;
  }
  void update_inputs(Simulation3D& sim, double dt) override {
    if (second_half) sim.settings.frame_elapsed = dt = dt / 2;
    emitters.update_inputs(sim, time_.time.value(), dt);
    sim.settings.frame_elapsed = 0;
  }
  void update_solids(Simulation3D&, double) override {}

  test::TestDocument document_;
  host::BaseObject& volume_;
  Simulation3D sim_;
  FrameTime time_{{0, 1}, {1, 25}};

 public:
  EmitterSampler emitters;
  bool second_half =
      false;  // the sources are those of a substep from the frame's middle to its end
};

const std::string kStill = std::string(kTetrahedron) + R"(, "position": [-2, -2, -2])";
// 40 units along x in the first frame.
const std::string kFast = std::string(kTetrahedron) +
                          R"(, "keyframes": {"position": [[0, [-20, 0, 0]], [1, [20, 0, 0]]]})";

TEST(EmitterSampler, FastSourcesLeaveNoGap) {
  Sampling fast(scene(kFast, R"("density": 1)"));
  fast.frame();
  int cells = 0;
  for (double x = -19.5; x < 21; ++x, ++cells) EXPECT_GT(fast.density_at({x, 0.5, 0.5}), 0) << x;
  EXPECT_EQ(cells, 41);
  EXPECT_EQ(fast.density_at({-24.5, 0.5, 0.5}), 0);
  EXPECT_EQ(fast.density_at({27.5, 0.5, 0.5}), 0);

  Sampling late(scene(kFast, R"("density": 1)"));
  late.second_half = true;
  late.frame();
  EXPECT_EQ(late.density_at({-10.5, 0.5, 0.5}), 0);
  EXPECT_GT(late.density_at({10.5, 0.5, 0.5}), 0);
  EXPECT_GT(late.density_at({20.5, 0.5, 0.5}), 0);

  Sampling once(scene(kFast, R"("density": 1)", R"(, "source_substeps": 1)"));
  once.frame();
  EXPECT_GT(once.density_at({20.5, 0.5, 0.5}), 0);
  EXPECT_EQ(once.density_at({0.5, 0.5, 0.5}), 0);
}

TEST(EmitterSampler, AddedAmountsArePerFrameAndSetOnesAreALevel) {
  double sums[2];
  for (int i = 0; i < 2; ++i) {
    Sampling added(scene(kStill, R"("density": 0.5, "density_mode": "add")",
                         i == 0 ? R"(, "source_substeps": 1)" : R"(, "source_substeps": 7)"));
    EXPECT_EQ(max(added.density()), 0) << "an instant adds nothing";
    const float once = max(added.frame());
    EXPECT_GT(once, 0.3f);
    EXPECT_LE(once, 0.5f * 1.00001f);
    sums[i] = sum(added.density());
    EXPECT_NEAR(max(added.frame()), 2 * once, 1e-6);
  }
  EXPECT_NEAR(sums[0], sums[1], 1e-5 * sums[0]);

  Sampling set(scene(kStill, R"("density": 3)", R"(, "source_substeps": 7)"));
  const double level = sum(set.density());
  EXPECT_GT(max(set.density()), 2);
  EXPECT_NEAR(sum(set.frame()), level, 1e-5 * level);
}

TEST(EmitterSampler, WhatIsOffEmitsNothing) {
  Sampling off(scene(kStill, R"("density": 1, "enabled": false)"));
  EXPECT_EQ(off.emitters.tags(), 0u);
  // The tag on the middle one of three objects counts for all below, if they are on and all above.
  const auto total = [](const std::string& top, const std::string& middle,
                        const std::string& bottom) {
    const std::string objects = volume() + R"(, {"type": "null", )" + top +
                                R"("children": [{"type": "null", )" + middle +
                                R"("tags": [{"type": "emitter", "parameters": {"density": 1}}],
           "children": [{"type": "null", )" +
                                bottom + R"("children": [{"type": "mesh", )" + kStill + "}]}]}]}";
    return sum(Sampling(objects).density());
  };
  const std::string disabled = R"("enabled": false, )";
  EXPECT_GT(total("", "", ""), 1);
  EXPECT_EQ(total(disabled, "", ""), 0);
  EXPECT_EQ(total("", disabled, ""), 0);
  EXPECT_EQ(total("", "", disabled), 0);
}

TEST(AddTriangles, OuterSidesStayOuter) {
  test::TestDocument document(R"({"type": "mesh", "name": "t", )" + std::string(kTetrahedron) +
                              R"(}, {"type": "mesh", "name": "q",
      "points": [[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], "polygons": [[0, 1, 2, 3]]})");
  Affine3d flip = Affine3d::identity();
  flip.rows[2][2] = -1;
  std::vector<VoxelizationTriangle> triangles;
  add_triangles(triangles, *host::ToPoly(&document.object("t")), flip);
  ASSERT_EQ(triangles.size(), 4u);
  for (const VoxelizationTriangle& t : triangles) {
    const Vec3f out = (t.p0 + t.p1 + t.p2) * (1.0f / 3) - Vec3f(1, 1, -1);
    EXPECT_GT(dot(cross(t.p1 - t.p0, t.p2 - t.p0), out), 0);
  }

  triangles.clear();
  add_triangles(triangles, *host::ToPoly(&document.object("q")), flip);
  ASSERT_EQ(triangles.size(), 2u);
  float area = 0;
  for (const VoxelizationTriangle& t : triangles) area += cross(t.p1 - t.p0, t.p2 - t.p0)[2] / 2;
  EXPECT_EQ(std::abs(area), 1);
}

}  // namespace
}  // namespace nbx
