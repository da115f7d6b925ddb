#include "C4D/emitter_sampler.h"

#include <functional>

#include "glue/scene_run.h"
#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"

namespace nbx {
namespace {

using test::SceneRun;

// A tetrahedron of edge 4 whose outer sides run clockwise, seen from outside, as the host has them.
const char* const kTetrahedron = R"("points": [[0, 0, 0], [4, 0, 0], [0, 4, 0], [0, 0, 4]],
    "polygons": [[0, 2, 1], [0, 1, 3], [0, 3, 2], [1, 2, 3]])";

std::string volume(const std::string& parameters = "") {
  return R"({"type": "volume", "name": "v",
             "parameters": {"size": [60, 20, 20], "simulate_density": true)" +
         parameters + "}}";
}

/// A volume and one object with an emitter tag.
std::string scene(const std::string& object, const std::string& emitter,
                  const std::string& volume_parameters = "") {
  return volume(volume_parameters) + R"(, {"name": "m", )" + object +
         R"(, "tags": [{"type": "emitter", "parameters": {)" + emitter + "}}]}";
}

const std::string kStill =
    R"("type": "mesh", )" + std::string(kTetrahedron) + R"(, "position": [-2, -2, -2])";
// 40 units along x in the first frame.
const std::string kFast = R"("type": "mesh", )" + std::string(kTetrahedron) +
                          R"(, "keyframes": {"position": [[0, [-20, 0, 0]], [1, [20, 0, 0]]]})";
const std::string kCube = R"("type": "cube", "parameters": {"size": [12, 12, 12]})";

TEST(EmitterSampler, FastSourcesLeaveNoGap) {
  SceneRun fast(scene(kFast, R"("density": 1)"));
  fast.frame();
  int cells = 0;
  for (double x = -19.5; x < 21; ++x, ++cells) EXPECT_GT(fast.density_at({x, 0.5, 0.5}), 0) << x;
  EXPECT_EQ(cells, 41);
  EXPECT_EQ(fast.density_at({-24.5, 0.5, 0.5}), 0);
  EXPECT_EQ(fast.density_at({27.5, 0.5, 0.5}), 0);

  SceneRun late(scene(kFast, R"("density": 1)"));
  late.second_half = true;
  late.frame();
  EXPECT_EQ(late.density_at({-10.5, 0.5, 0.5}), 0);
  EXPECT_GT(late.density_at({10.5, 0.5, 0.5}), 0);
  EXPECT_GT(late.density_at({20.5, 0.5, 0.5}), 0);

  SceneRun once(scene(kFast, R"("density": 1)", R"(, "source_substeps": 1)"));
  once.frame();
  EXPECT_GT(once.density_at({20.5, 0.5, 0.5}), 0);
  EXPECT_EQ(once.density_at({0.5, 0.5, 0.5}), 0);
}

TEST(EmitterSampler, PaintedWeightsScaleTheSurface) {
  const auto given = [](const char* weights, const char* flag) {
    SceneRun run(scene(kStill + weights,
                       std::string(R"("density": 1, "density_mode": "add", "fill": false)") + flag,
                       R"(, "source_substeps": 1)"));
    run.frame();
    return sum(run.density());
  };
  const char* const on = R"(, "corner_weights": true)";
  const char* const quarter = R"(, "weights": [0.25, 0.25, 0.25, 0.25])";
  const double whole = given("", "");
  EXPECT_GT(whole, 1);
  EXPECT_NEAR(given(quarter, on), 0.25 * whole, 1e-4 * whole);
  EXPECT_EQ(given(quarter, ""), whole);
  EXPECT_NEAR(given("", on), whole, 1e-5 * whole) << "a mesh without weights";
  const double corner = given(R"(, "weights": [1, 0, 0, 0])", on);
  EXPECT_GT(corner, 0.1 * whole);
  EXPECT_LT(corner, 0.6 * whole);
}

TEST(EmitterSampler, AddedAmountsArePerFrameAndSetOnesAreALevel) {
  double sums[2];
  for (int i = 0; i < 2; ++i) {
    SceneRun added(scene(kStill, R"("density": 0.5, "density_mode": "add")",
                         i == 0 ? R"(, "source_substeps": 1)" : R"(, "source_substeps": 7)"));
    EXPECT_EQ(max(added.density()), 0) << "an instant adds nothing";
    added.frame();
    const float once = max(added.density());
    EXPECT_GT(once, 0.3f);
    EXPECT_LE(once, 0.5f * 1.00001f);
    sums[i] = sum(added.density());
    added.frame();
    EXPECT_NEAR(max(added.density()), 2 * once, 1e-6);
  }
  EXPECT_NEAR(sums[0], sums[1], 1e-5 * sums[0]);

  SceneRun set(scene(kStill, R"("density": 3)", R"(, "source_substeps": 7)"));
  const double level = sum(set.density());
  EXPECT_GT(max(set.density()), 2);
  set.frame();
  EXPECT_NEAR(sum(set.density()), level, 1e-5 * level);
}

TEST(EmitterSampler, WhatIsOffEmitsNothing) {
  EXPECT_EQ(SceneRun(scene(kStill, R"("density": 1, "enabled": false)")).tags(), 0u);
  // The tag on the middle one of three objects counts for all below, if they are on and all above.
  const auto total = [](const std::string& top, const std::string& middle,
                        const std::string& bottom) {
    const std::string objects = volume() + R"(, {"type": "null", )" + top +
                                R"("children": [{"type": "null", )" + middle +
                                R"("tags": [{"type": "emitter", "parameters": {"density": 1}}],
           "children": [{"type": "null", )" +
                                bottom + R"("children": [{)" + kStill + "}]}]}]}";
    return sum(SceneRun(objects).density());
  };
  const std::string disabled = R"("enabled": false, )";
  EXPECT_GT(total("", "", ""), 1);
  EXPECT_EQ(total(disabled, "", ""), 0);
  EXPECT_EQ(total("", disabled, ""), 0);
  EXPECT_EQ(total("", "", disabled), 0);
}

TEST(EmitterSampler, FillsTheInsideUnlessItIsSolid) {
  const Vec3d centre(0.5, 0.5, 0.5), surface(5.5, 0.5, 0.5);
  SceneRun filled(scene(kCube, R"("density": 1)"));
  EXPECT_EQ(filled.density_at(centre), 1);
  EXPECT_EQ(filled.density_at(surface), 1);
  EXPECT_FLOAT_EQ(filled.density_at({6.5, 0.5, 0.5}), 1 - 0.5f / std::sqrt(3.0f));
  EXPECT_TRUE(filled.keep_box.empty());
  for (const char* shell : {R"("density": 1, "fill": false)", R"("density": 1, "solid": true)"}) {
    SceneRun hollow(scene(kCube, shell));
    EXPECT_EQ(hollow.density_at(centre), 0);
    EXPECT_FLOAT_EQ(hollow.density_at(surface), 1 - 0.5f / std::sqrt(3.0f));
  }
  SceneRun solid(scene(kCube, R"("solid": true)"));
  EXPECT_EQ(solid.keep_box, (IntBox{{23, 3, 3}, {36, 16, 16}})) << "with a cell round it";
}

TEST(EmitterSampler, PushesOffTheSurfaceOrAlongTheDirection) {
  SceneRun push(scene(kCube, R"("normal_force": 50)", R"(, "source_substeps": 2)"));
  float top = 0, bottom = 0;
  push.after_inputs = [&] {
    const SparseField<float, 3>& v = *push.sim.velocity_sources()[1];
    for (int y = 13; y < 19; ++y) top = std::max(top, v.value(30, y, 10));
    for (int y = 1; y < 7; ++y) bottom = std::min(bottom, v.value(30, y, 10));
  };
  push.frame();
  // Half of a frame in each sample: 50 units a frame make 0.25 m/s, less half a cell's fall-off.
  EXPECT_NEAR(top, 0.25f * (1 - 0.5f / std::sqrt(3.0f)), 1e-5f);
  EXPECT_NEAR(bottom, -top, 1e-5f);

  SceneRun blow(scene(kCube + R"(, "rotation": [90, 0, 0])", R"("direction": [0, 0, 30])"));
  Vec3f inside;
  blow.after_inputs = [&] {
    for (int a = 0; a < 3; ++a)
      inside[a] = blow.sim.velocity_sources()[static_cast<std::size_t>(a)]->value(30, 10, 10);
  };
  blow.frame();
  EXPECT_NEAR(inside[0], 0.3f, 1e-5f) << "heading turns z towards x";
  EXPECT_NEAR(inside[1], 0, 1e-5f);
  EXPECT_NEAR(inside[2], 0, 1e-5f);
}

// The texture is 0 where x < 20 cells, 1 beyond; the domain's first cell is its origin.
TEST(EmitterSampler, TexturesScaleTheSource) {
  const std::string step = R"("textures": [{"type": "gradient", "name": "step",
      "parameters": {"scale": 0.002, "offset": [0.295, 0, 0], "color_a": [0, 0, 0],
                     "color_b": [1, 1, 1]}}], )";
  SceneRun run(scene(kCube, R"("density": 1, "shader": "step")"), step);
  EXPECT_EQ(run.density_at({-2.5, 0.5, 0.5}), 0);
  EXPECT_EQ(run.density_at({2.5, 0.5, 0.5}), 1);

  const std::string material = step + R"("materials": [{"name": "paint",
      "parameters": {"emission": [1, 1, 1], "emission_texture": "step"}}], )";
  const auto painted = [&](const std::string& channel) {
    return SceneRun(volume() + R"(, {"type": "plane", "parameters": {"width": 20, "depth": 20},
        "tags": [{"type": "texture", "parameters": {"material": "paint"}},
                 {"type": "emitter", "parameters": {"density": 1, "fill": false,
                  "surface_channel": ")" +
                        channel + R"("}}]})",
                    material);
  };
  const auto ends = [](SceneRun&& painted_run) {
    return std::pair{painted_run.density_at({-8.5, 0.5, 0.5}),
                     painted_run.density_at({8.5, 0.5, 0.5})};
  };
  const auto [low, high] = ends(painted("emission"));
  EXPECT_EQ(low, 0) << "u runs from 0 to 1 along x";
  EXPECT_GT(high, 0.5f);
  const auto [other_low, other_high] = ends(painted("transparency"));
  EXPECT_EQ(other_low, other_high) << "the material has no such channel";
}

TEST(EmitterSampler, SelectionsEmitAlone) {
  const std::string two = R"("type": "mesh", "points": [[-9, 0, -5], [-9, 0, 5], [-3, 0, 5],
      [-3, 0, -5], [3, 0, -5], [3, 0, 5], [9, 0, 5], [9, 0, -5]],
      "polygons": [[0, 1, 2, 3], [4, 5, 6, 7]])";
  const std::string objects = volume() + R"(, {"name": "m", )" + two + R"(, "tags": [
      {"type": "selection", "name": "right", "polygons": [1]},
      {"type": "emitter", "parameters": {"density": 1, "selections": ["right"]}}]})";
  SceneRun run(objects);
  EXPECT_EQ(run.density_at({-5.5, 0.5, 0.5}), 0);
  EXPECT_GT(run.density_at({5.5, 0.5, 0.5}), 0.5f);
}

TEST(EmitterSampler, ParticlesEmitAndHandOverTheirVelocity) {
  const std::string shower = R"("type": "particle_emitter", "position": [-25, 0.5, 0.5],
      "rotation": [90, 0, 0], "parameters": {"rate": 100, "speed": 100, "life": 1})";
  SceneRun run(scene(shower, R"("density": 1, "velocity_transfer": 0.5)"));
  float speed = 0;
  run.after_inputs = [&] {
    const SparseField<float, 3>& u = *run.sim.velocity_sources()[0];
    for (int x = 0; x < 30; ++x) speed = std::max(speed, u.value(x, 10, 9));
  };
  for (int i = 0; i < 5; ++i) run.frame();
  int covered = 0;
  for (double x = -24.5; x < -8; ++x) covered += run.density_at({x, 0.5, 0.5}) > 0.1f;
  EXPECT_GT(covered, 10) << "a trail of 20 units";
  EXPECT_GT(speed, 0.3f);
  EXPECT_LE(speed, 0.5f);
}

// What scenes have by mistake: it costs a log line or nothing, and the rest of the scene goes on.
TEST(EmitterSampler, BadInputIsSkipped) {
  const std::string box = R"("type": "mesh", "points": [[-6, -6, -6], [6, -6, -6], [6, -6, 6],
      [-6, -6, 6], [-6, 6, -6], [6, 6, -6], [6, 6, 6], [-6, 6, 6], [0, -6, 0]], "polygons": )";
  // The lid is missing; a side stands there twice; two triangles have no area.
  const std::string open_box = box + R"([[0, 1, 2, 3], [0, 4, 5, 1], [1, 5, 6, 2], [2, 6, 7, 3],
      [3, 7, 4, 0], [3, 7, 4, 0], [0, 8, 2], [4, 4, 4]])";
  const std::string crossing = box + "[[0, 2, 1, 3], [0, 6, 5], [3, 5, 7], [4, 1, 6, 2]]";
  const std::string density = R"("density": 1, "normal_force": 20)";
  const struct {
    std::string objects, message;
    bool emits;
  } cases[] = {
      {scene(open_box, density), "", true},
      {scene(crossing, density), "", true},
      {scene(R"("type": "null")", density), "", false},
      {scene(R"("type": "light")", density), "", false},
      {scene(R"("type": "sphere", "position": [9000, 0, 0],
                "parameters": {"segments": 1000, "rings": 500})",
             density),
       "", false},
      {scene(open_box, density + R"(, "selections": ["m"])"),
       "Unsupported tag in selection list. Type 5100", false},
      {scene(R"("type": "particle_emitter", "parameters": {"rate": 0})", density), "", false},
      {scene(R"("type": "particle_emitter", "parameters": {"rate": 2.5e7, "size": [30, 10, 10],
                "speed": 20})",
             density + R"(, "velocity_transfer": 1)"),
       "", true},
  };
  for (const auto& [objects, message, emits] : cases) {
    SCOPED_TRACE(objects);
    const test::LogCapture log;
    SceneRun run(objects);
    run.frame();
    EXPECT_TRUE(log.contains(message));
    const double total = run.sim.settings.active_box.empty() ? 0 : sum(run.density());
    EXPECT_TRUE(std::isfinite(total) && std::isfinite(m_infnorm(run.sim.fluid().U())));
    EXPECT_EQ(total > 1, emits) << total;
  }
  const std::string lidless =
      box + "[[0, 1, 2, 3], [0, 4, 5, 1], [1, 5, 6, 2], [2, 6, 7, 3], [3, 7, 4, 0]]";
  EXPECT_EQ(SceneRun(scene(lidless, R"("density": 1)")).density_at({0.5, 2.5, 0.5}), 1)
      << "two of three directions see it closed";
}

}  // namespace
}  // namespace nbx
