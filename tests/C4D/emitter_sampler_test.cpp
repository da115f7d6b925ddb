#include "C4D/sources/emitter_sampler.h"

#include <map>
#include <numeric>
#include <set>

#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/scene_run.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/source_parameters.h"
#include "C4D/sources/particle_sources.h"
#include "math/mfield_operations.h"

namespace nbx {
namespace {

using test::SceneRun;

// A tetrahedron of edge 4 whose outer sides run clockwise, seen from outside, as the host has them.
const std::string kTetrahedron =
    R"("type": "mesh", "points": [[0, 0, 0], [4, 0, 0], [0, 4, 0], [0, 0, 4]],
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

const std::string kStill = kTetrahedron + R"(, "position": [-2, -2, -2])";
// 40 units along x in the first frame.
const std::string kFast =
    kTetrahedron + R"(, "keyframes": {"position": [[0, [-20, 0, 0]], [1, [20, 0, 0]]]})";
const std::string kCube = R"("type": "cube", "parameters": {"size": [12, 12, 12]})";

TEST(EmitterSampler, FastSourcesLeaveNoGap) {
  const struct {
    const char* substeps;
    bool late;
    double first, last;  // the cells with gas, and those without
    std::vector<double> without;
  } cases[] = {{"", false, -19.5, 20.5, {-24.5, 27.5}},
               {"", true, 10.5, 20.5, {-10.5}},
               {R"(, "source_substeps": 1)", false, 20.5, 20.5, {0.5}}};
  for (const auto& [substeps, late, first, last, without] : cases) {
    SceneRun run(scene(kFast, R"("density": 1)", substeps));
    run.second_half = late;
    run.frame();
    for (double x = first; x <= last; ++x) EXPECT_GT(run.density_at({x, 0.5, 0.5}), 0) << x;
    for (const double x : without) EXPECT_EQ(run.density_at({x, 0.5, 0.5}), 0) << x;
  }
}

TEST(EmitterSampler, PaintedWeightsScaleTheSurface) {
  const auto given = [](const std::string& weights, const char* flag) {
    SceneRun run(scene(kStill + weights, R"("density": 1, "density_mode": "add", "fill": false,
        "corner_weights": )" + std::string(flag),
                       R"(, "source_substeps": 1)"));
    run.frame();
    return sum(run.density());
  };
  const std::string quarter = R"(, "weights": [0.25, 0.25, 0.25, 0.25])";
  const double whole = given("", "false");
  EXPECT_GT(whole, 1);
  EXPECT_NEAR(given(quarter, "true"), 0.25 * whole, 1e-4 * whole);
  EXPECT_EQ(given(quarter, "false"), whole);
  EXPECT_NEAR(given("", "true"), whole, 1e-5 * whole) << "a mesh without weights";
  const double corner = given(R"(, "weights": [1, 0, 0, 0])", "true") / whole;
  EXPECT_TRUE(corner > 0.1 && corner < 0.6) << corner;
}

TEST(EmitterSampler, AddedAmountsArePerFrameAndSetOnesAreALevel) {
  double sums[2];
  for (int i = 0; i < 2; ++i) {
    SceneRun added(scene(kStill, R"("density": 0.5, "density_mode": "add")",
                         i == 0 ? R"(, "source_substeps": 1)" : R"(, "source_substeps": 7)"));
    EXPECT_EQ(max(added.density()), 0) << "an instant adds nothing";
    added.frame();
    const float once = max(added.density());
    EXPECT_TRUE(once > 0.3f && once <= 0.5f * 1.00001f) << once;
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

// The tag on the middle one of three objects counts for all below, if they are on and all above.
TEST(EmitterSampler, WhatIsOffEmitsNothing) {
  EXPECT_EQ(SceneRun(scene(kStill, R"("density": 1, "enabled": false)")).tags(), 0u);
  for (int off = 0; off < 4; ++off) {
    const auto on = [&](int level) { return level == off ? "false" : "true"; };
    SceneRun run(
        test::data("nested.json", {{"UPPER", on(0)}, {"MIDDLE", on(1)}, {"LOWER", on(2)}}));
    EXPECT_EQ(sum(run.density()) > 1, off == 3) << off;
  }
}

TEST(EmitterSampler, FillsTheInsideUnlessItIsSolid) {
  const float rim = 1 - 0.5f / std::sqrt(3.0f);
  const struct {
    const char* parameters;
    float center, surface, outside, far;
  } cases[] = {{R"("density": 1)", 1, 1, rim, 0},
               {R"("density": 1, "thickness": 4)", 1, 1, 1 - 0.5f / 4, 1 - 2.5f / 4},
               {R"("density": 1, "fill": false)", 0, rim, rim, 0},
               {R"("density": 1, "solid": true)", 0, rim, rim, 0}};
  for (const auto& [parameters, center, surface, outside, far] : cases) {
    SCOPED_TRACE(parameters);
    SceneRun run(scene(kCube, parameters));
    EXPECT_EQ(run.density_at({0.5, 0.5, 0.5}), center);
    EXPECT_FLOAT_EQ(run.density_at({5.5, 0.5, 0.5}), surface);
    EXPECT_FLOAT_EQ(run.density_at({6.5, 0.5, 0.5}), outside);
    EXPECT_FLOAT_EQ(run.density_at({8.5, 0.5, 0.5}), far);
    EXPECT_EQ(run.keep_box.empty(), std::string(parameters).find("solid") == std::string::npos);
  }
}

// Weights are kept from one sample to the next, as long as nothing changes.
TEST(EmitterSampler, FollowsEveryChangeOfAStillSource) {
  const auto text = [](const char* thickness, const char* more = "") {
    return scene(kCube + more, R"("density": 0.5, "density_mode": "add", "corner_weights": true)" +
                                   std::string(R"(, "thickness": )") + thickness);
  };
  const auto given = [](SceneRun& run) {
    double total = 0;
    run.after_inputs = [&](StepSources& sources) {
      for (const SparseBlockEntry& b : sources.channel(kDensity).blocks())
        total += std::accumulate(b.data, b.data + 512, 0.0);
    };
    run.frame();
    return total;
  };
  SceneRun run(text("2")), thick(text("4")), beside(text("2", R"(, "position": [0.25, 0, 0])"));
  SceneRun moves(text("2", R"(, "keyframes": {"position": [[1, [0, 0, 0]], [2, [0.25, 0, 0]]]})"));
  const double first = given(run);
  EXPECT_GT(first, 100);
  EXPECT_NEAR(given(run), first, 1e-9 * first);
  run.object("m").GetFirstTag()->SetParameter(TVOLUME.THICKNESS, 4.0);
  EXPECT_NEAR(given(run), given(thick), 1e-9 * first);
  EXPECT_NEAR(given(moves), first, 1e-9 * first);
  const double moved = given(beside);
  EXPECT_GT(std::abs(moved - first), 1e-6 * first);
  EXPECT_NEAR(given(moves), moved, 1e-9 * first);
}

// The heading turns z towards x.
TEST(EmitterSampler, BlowsAlongTheDirectionOfTheObject) {
  SceneRun run(scene(kCube + R"(, "rotation": [90, 0, 0])", R"("direction": [0, 0, 30])"));
  run.after_inputs = [&](StepSources& sources) {
    for (std::size_t a = 0; a < 3; ++a)
      EXPECT_NEAR(sources.velocity_sources()[a]->value(30, 10, 10), a == 0 ? 0.3f : 0, 1e-5f) << a;
  };
  run.frame();
}

// The texture is 0 where x < 20 cells, 1 beyond; the domain's first cell is its origin.
TEST(EmitterSampler, TexturesScaleTheSource) {
  SceneRun run("textured_source.json");
  EXPECT_EQ(run.density_at({-2.5, 0.5, 0.5}), 0);
  EXPECT_EQ(run.density_at({2.5, 0.5, 0.5}), 1);
  run.after_inputs = [&](StepSources& sources) {
    const SparseField<float, 3>& push = *sources.velocity_sources()[1];
    EXPECT_EQ(push.value(27, 16, 10), 0);
    EXPECT_GT(push.value(32, 16, 10), 0);
    EXPECT_LT(push.value(32, 4, 10), 0) << "off the surface";
  };
  run.frame();
}

// A plane of 20 cells shows the channel as pictures do: sampled where the cell is, however fine
// the texture, and laid out by its tag.
TEST(EmitterSampler, SurfaceChannelsScaleTheSource) {
  const auto painted = [](const std::string& texture, const std::string& tag,
                          const std::string& channel = "emission") {
    return SceneRun(test::data("painted_plane.json",
                               {{"TEXTURE", texture}, {"PLACE", tag}, {"CHANNEL", channel}}));
  };
  const std::string ramp = R"("type": "gradient", "parameters": {"direction": [1, 0, 0]})";
  const struct {
    std::string tag;
    double (*shown)(double u);
  } cases[] = {
      {"", [](double u) { return u; }},
      {R"(, "length_u": 0.5, "tile": true)", [](double u) { return std::min(2 * u, 1.0); }},
      {R"(, "length_u": 0.5, "mirror": true)", [](double u) { return 1 - std::abs(2 * u - 1); }},
      {R"(, "offset_u": 0.25, "length_u": 0.5, "tile": false)",
       [](double u) { return u >= 0.25 && u <= 0.75 ? 2 * u - 0.5 : 0; }}};
  for (const auto& [tag, shown] : cases) {
    SceneRun run = painted(ramp, tag);
    for (int i = 0; i < 20; ++i)
      EXPECT_NEAR(run.density_at({i - 9.5, 0.5, 0.5}), shown((i + 0.5) / 20), 1e-5) << tag << i;
  }
  // Fifty checks to a cell, with the cell's center always in a white one.
  SceneRun fine = painted(
      R"("type": "checker", "parameters": {"scale": 0.001, "offset": [0.0005, 0.0005, 0]})", "");
  SceneRun other = painted(ramp, "", "transparency");
  for (int i = 1; i < 19; ++i) {
    EXPECT_EQ(fine.density_at({i - 9.5, 0.5, 0.5}), fine.density_at({-9.5, 0.5, 0.5})) << i;
    EXPECT_EQ(other.density_at({i - 9.5, 0.5, 0.5}), 1) << "the material has no such channel";
  }
}

// Amounts by channel, each in its mode, and lengths and speeds in the units of the run.
TEST(EmitterSampler, TagsReachTheRecord) {
  test::TestDocument document("tagged_group.json");
  SolverParams params;
  params.voxel_size = 2;
  params.time_scale = 3;
  const SimulationObjectParameters p =
      source_parameters(*document.object("m").GetFirstTag(), params, 0.5);
  EXPECT_EQ(p.amounts,
            (std::map<int, double>{
                {kDensity, 0.5}, {kTemperature, 2}, {kFuel, 1.5}, {kBurn, 4}, {kExpansion, 5}}));
  EXPECT_EQ(p.add_keys, (std::set<int>{kDensity, kFuel}));
  EXPECT_DOUBLE_EQ(p.normal_force, 0.3);
  EXPECT_DOUBLE_EQ(p.velocity_transfer, 0.07);
  EXPECT_LT(length(p.direction - Vec3d(0.08, 0.09, 0.1)), 1e-12);
  EXPECT_EQ(p.thickness, 5.5);
  EXPECT_EQ(p.time_scale, 3);
}

// Amounts of the first versions were per second.
TEST(EmitterTag, OldVersionsAreConvertedOnce) {
  for (const auto& [version, factor] :
       {std::pair{"0", 0.04}, {"1", 0.04}, {"2", 1.0}, {"6", 1.0}}) {
    SCOPED_TRACE(version);
    test::TestDocument document(test::data("old_tag.json", {{"VERSION", version}}));
    host::BaseTag& tag = *document.object("m").GetFirstTag();
    tag.Message(host::kMessageDocumentLoaded);
    evaluate(*document, 0.4);
    const host::BaseContainer& p = tag.GetDataInstance();
    for (const auto& [id, value] : {std::pair{TVOLUME.DENSITY, 100 * factor},
                                    {TVOLUME.TEMPERATURE, 100 * factor},
                                    {TVOLUME.FUEL, 25 * factor},
                                    {TVOLUME.BURN, 50.0}})
      EXPECT_DOUBLE_EQ(p.GetReal(id), value) << id;
    EXPECT_EQ(p.GetLong(TVOLUME.VERSION), 6);
  }
}

// A solid is whole all the same, and so is the box that is kept for it.
TEST(EmitterSampler, SelectionsEmitAlone) {
  SceneRun run("selected_top.json");
  run.frame();
  EXPECT_EQ(run.keep_box, (IntBox{{23, 3, 3}, {36, 16, 16}})) << "with a cell round it";
  ASSERT_TRUE(run.solids.phi);
  EXPECT_LT(min(run.solids.phi->read_cpu()), 0);
  EXPECT_GT(run.density_at({0.5, 6.5, 0.5}), 0.5f);
  EXPECT_EQ(run.density_at({0.5, -6.5, 0.5}), 0);
}

TEST(EmitterSampler, ParticlesEmitAndHandOverTheirVelocity) {
  SceneRun run("shower.json");
  float speed = 0;
  run.after_inputs = [&](StepSources& sources) {
    const SparseField<float, 3>& u = *sources.velocity_sources()[0];
    for (int x = 0; x < 30; ++x) speed = std::max(speed, u.value(x, 10, 9));
  };
  for (int i = 0; i < 5; ++i) run.frame();
  int covered = 0;
  for (double x = -24.5; x < -8; ++x) covered += run.density_at({x, 0.5, 0.5}) > 0.1f;
  EXPECT_GT(covered, 10) << "a trail of 20 units";
  EXPECT_GT(speed, 0.3f);
  EXPECT_LE(speed, 0.5f);
}

// One particle is born at the start and has come 2 units far, to the center of a cell.
TEST(EmitterSampler, ParticleMapScalesTheStrengthOfParticles) {
  const auto strength = [](const std::string& tagged, const char* map, const char* curve) {
    SceneRun run(
        test::data("mapped_particles.json", {{"EMITTER", tagged == "emitter" ? "true" : "false"},
                                             {"GROUP", tagged == "group" ? "true" : "false"},
                                             {"MAP", map},
                                             {"CURVE", curve}}));
    run.frame();
    EXPECT_EQ(max(run.density()), run.density_at({0.5, 0.5, 2.5}));
    return run.density_at({0.5, 0.5, 2.5});
  };
  // The curve is level at its ends: t^2 (3 - 2 t).
  const char* const wide = "[[0, 0], [80, 1]]";
  EXPECT_FLOAT_EQ(strength("emitter", "nothing", wide), 1);
  EXPECT_FLOAT_EQ(strength("emitter", "age", "[[0, 0], [0.16, 1]]"), 0.15625f);
  EXPECT_FLOAT_EQ(strength("emitter", "speed", wide), 0.68359375f);
  EXPECT_FLOAT_EQ(strength("emitter", "mass", wide), 1) << "a column that emitters don't fill";
  EXPECT_FLOAT_EQ(strength("emitter", "size", wide), 1);
  EXPECT_FLOAT_EQ(strength("group", "mass", wide), 0.15625f);
  EXPECT_FLOAT_EQ(strength("group", "size", wide), 0.5f);
  EXPECT_FLOAT_EQ(strength("group", "speed", wide), 0.68359375f);
}

TEST(ParticleTable, HoldsPositionsVelocitiesAndLiveParticles) {
  test::TestDocument document(R"({"type": "particle_emitter", "name": "e"})");
  auto& particles = static_cast<host::SceneObject&>(document.object("e")).particles;
  host::Particle p;
  p.position = {1, 2, 3};
  p.velocity = {4, 5, 6};
  for (const std::uint32_t bits : {0u, 1u, 2u, 3u, 7u}) p.bits = bits, particles.push_back(p);
  const ParticleTable table =
      make_table(document.object("e"), {true, true, true, true, true, true});
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(table.column("active")[i], i > 2) << i;
    EXPECT_EQ(table.column("position.z")[i], 3) << "in the world";
    EXPECT_EQ(table.column("velocity.x")[i], 4);
    EXPECT_EQ(table.column("velocity.z")[i], -6) << "the grid's z runs back";
  }
}

// What scenes have by mistake: it causes a log line or nothing, and the rest of the scene still
// works.
TEST(EmitterSampler, BadInputIsSkipped) {
  const std::string density = R"("density": 1, "normal_force": 20)";
  const std::pair<std::string, const char*> cases[] = {
      {R"("type": "null")", ""},
      {R"("type": "light")", ""},
      {R"("type": "sphere", "position": [9000, 0, 0], "parameters": {"segments": 1000, "rings": 500})",
       ""},
      {kStill, R"(, "selections": ["m"])"},
      {R"("type": "particle_emitter", "parameters": {"rate": 0})", ""},
      {R"("type": "particle_emitter", "parameters": {"rate": 2.5e7, "size": [30, 10, 10], "speed": 20})",
       R"(, "velocity_transfer": 1)"}};
  const test::LogCapture log;
  for (const auto& [object, more] : cases) {
    SCOPED_TRACE(object);
    SceneRun run(scene(object, density + more));
    run.frame();
    const double total = run.sim.domain.active_box.empty() ? 0 : sum(run.density());
    EXPECT_TRUE(std::isfinite(total) && std::isfinite(m_infnorm(run.sim.fluid().U())));
    EXPECT_EQ(total > 1, *more != 0 && object != kStill) << total;
  }
  EXPECT_TRUE(log.contains("Unsupported tag in selection list. Type 5100"));
}

}  // namespace
}  // namespace nbx
