#include "C4D/emitter_sampler.h"

#include <map>
#include <set>

#include "C4D/host_conversion.h"
#include "C4D/particle_sources.h"
#include "C4D/source_parameters.h"
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
  SceneRun thick(scene(kCube, R"("density": 1, "thickness": 4)"));
  EXPECT_FLOAT_EQ(thick.density_at({8.5, 0.5, 0.5}), 1 - 2.5f / 4);
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
  SceneRun push(scene(kCube, R"("normal_force": 50, "shader": "step")"), step);
  push.after_inputs = [&] {
    const SparseField<float, 3>& v = *push.sim.velocity_sources()[1];
    EXPECT_EQ(v.value(27, 16, 10), 0) << "the shader scales the push too";
    EXPECT_GT(v.value(32, 16, 10), 0);
  };
  push.frame();
}

// A plane of 20 cells shows the channel as pictures do: sampled where the cell is, however fine
// the texture, and laid out by its tag.
TEST(EmitterSampler, SurfaceChannelsScaleTheSource) {
  const auto painted = [](const std::string& texture, const std::string& tag,
                          const std::string& channel = "emission") {
    return SceneRun(volume() + R"(, {"type": "plane", "position": [0, 0.5, 0],
        "parameters": {"width": 20, "depth": 20}, "tags": [
          {"type": "texture", "parameters": {"material": "paint")" +
                        tag + R"(}}, {"type": "emitter", "parameters": {"density": 1,
          "fill": false, "surface_channel": ")" +
                        channel + R"("}}]})",
                    R"("textures": [{"name": "t", )" + texture + R"(}],
        "materials": [{"name": "paint", "parameters": {"emission": [1, 1, 1],
                       "emission_texture": "t"}}], )");
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

// The record of a source has all that its tag says: amounts by channel, each in its mode.
TEST(EmitterSampler, TagsReachTheRecord) {
  const auto record = [](const std::string& modes) {
    test::TestDocument document(
        R"({"type": "particle_group", "name": "m", "tags": [{"type": "emitter", "parameters": {
        "density": 1, "temperature": 2, "fuel": 3, "burn": 4, "expansion": 5, "normal_force": 60,
        "velocity_transfer": 7, "direction": [8, 9, 10], "thickness": 11, "fill": false,
        "particle_map": "mass", "particle_curve": [[0, 2], [1, 5]])" +
        modes + "}}]}");
    SimSettings settings;
    settings.voxel_size = 2;
    settings.time_scale = 3;
    return source_parameters(*document.object("m").GetFirstTag(), settings, 0.5);
  };
  using Amounts = std::map<int, double>;
  const SimulationObjectParameters set = record("");
  EXPECT_EQ(set.amounts,
            (Amounts{{kDensity, 1}, {kTemperature, 2}, {kFuel, 3}, {kBurn, 4}, {kExpansion, 5}}));
  EXPECT_TRUE(set.add_keys.empty());
  EXPECT_DOUBLE_EQ(set.normal_force, 0.3);
  EXPECT_DOUBLE_EQ(set.velocity_transfer, 0.07);
  EXPECT_LT(length(set.direction - Vec3d(0.08, 0.09, 0.1)), 1e-12);
  EXPECT_EQ(set.thickness, 5.5);
  EXPECT_FALSE(set.fill);
  EXPECT_EQ(set.particle_map, ParticleMap::kMass);
  EXPECT_FLOAT_EQ(set.particle_curve.evaluate(0.5f), 3.5f);
  EXPECT_EQ(set.time_scale, 3);
  const SimulationObjectParameters first = record(R"(, "density_mode": "add", "fuel_mode": "add")");
  EXPECT_EQ(first.add_keys, (std::set<int>{kDensity, kFuel}));
  EXPECT_EQ(
      first.amounts,
      (Amounts{{kDensity, 0.5}, {kTemperature, 2}, {kFuel, 1.5}, {kBurn, 4}, {kExpansion, 5}}));
  EXPECT_EQ(record(R"(, "temperature_mode": "add", "burn_mode": "add")").add_keys,
            (std::set<int>{kTemperature, kBurn}));
}

// Amounts of the first versions were per second.
TEST(EmitterTag, OldVersionsAreConvertedOnce) {
  for (const auto& [version, factor] : {std::pair{0, 0.04}, {1, 0.04}, {2, 1.0}, {6, 1.0}}) {
    SCOPED_TRACE(version);
    test::TestDocument document(R"({"type": "null", "name": "m", "tags": [{"type": "emitter",
        "parameters": {"version": )" +
                                std::to_string(version) +
                                R"(, "temperature": 100, "fuel": 25, "burn": 50},
        "keyframes": {"parameters.density": [[0, 50], [10, 100]]}}]})");
    host::BaseTag& tag = *document.object("m").GetFirstTag();
    tag.Message(host::kMessageDocumentLoaded);
    evaluate(*document, 0.4);
    const host::BaseContainer& p = tag.GetDataInstance();
    EXPECT_DOUBLE_EQ(p.GetReal(TVOLUME_DENSITY), 100 * factor);
    EXPECT_DOUBLE_EQ(p.GetReal(TVOLUME_TEMPERATURE), 100 * factor);
    EXPECT_DOUBLE_EQ(p.GetReal(TVOLUME_FUEL), 25 * factor);
    EXPECT_EQ(p.GetReal(TVOLUME_BURN), 50);
    EXPECT_EQ(p.GetLong(TVOLUME_VERSION), 6);
  }
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

  // A solid is whole all the same, and so is the box that is kept for it.
  const std::string solid_box = R"("type": "mesh", "points": [[-6, -6, -6], [6, -6, -6], [6, -6, 6],
      [-6, -6, 6], [-6, 6, -6], [6, 6, -6], [6, 6, 6], [-6, 6, 6]], "polygons": [[0, 1, 2, 3],
      [0, 4, 5, 1], [1, 5, 6, 2], [2, 6, 7, 3], [3, 7, 4, 0], [4, 7, 6, 5]])";
  SceneRun solid(volume() + R"(, {"name": "m", )" + solid_box + R"(, "tags": [
      {"type": "selection", "name": "top", "polygons": [5]}, {"type": "emitter",
       "parameters": {"solid": true, "density": 1, "selections": ["top"]}}]})");
  solid.frame();
  EXPECT_EQ(solid.keep_box, (IntBox{{23, 3, 3}, {36, 16, 16}}));
  ASSERT_TRUE(solid.solids.phi);
  EXPECT_LT(min(solid.solids.phi->cpu_field()), 0);
  EXPECT_GT(solid.density_at({0.5, 6.5, 0.5}), 0.5f);
  EXPECT_EQ(solid.density_at({0.5, -6.5, 0.5}), 0);
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

// One particle is born at the start and has come 2 units far, to the center of a cell.
TEST(EmitterSampler, ParticlesAreAsStrongAsTheirMapSays) {
  const auto strength = [](const char* tagged, const char* map, const char* curve) {
    const std::string tag = R"("tags": [{"type": "emitter", "parameters": {"density": 1,
        "particle_map": ")" +
                            std::string(map) + R"(", "particle_curve": )" + curve + "}}]";
    SceneRun run(
        volume() + R"(, {"type": "particle_system", "name": "s", "children": [
        {"type": "particle_emitter", "position": [0.5, 0.5, 0.5], )" +
        (tagged == std::string("emitter") ? tag + ", " : "") + R"("parameters": {"rate": 25,
         "speed": 50, "mass": 20, "particle_size": 40, "life": 9}}]},
        {"type": "particle_group", )" +
        (tagged == std::string("group") ? tag + ", " : "") + R"("parameters": {"system": "s"}})");
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

TEST(ParticleTable, HoldsTheColumnsAndWhoIsAlive) {
  test::TestDocument document(R"({"type": "particle_emitter", "name": "e"},
      {"type": "particle_group", "name": "g"})");
  host::Particle p;
  p.position = {1, 2, 3};
  p.velocity = {4, 5, 6};
  p.age = 7;
  p.mass = 8;
  p.size = 9;
  for (const std::string name : {"e", "g"}) {
    auto& object = static_cast<host::SceneObject&>(document.object(name));
    object.particles.clear();
    for (const std::uint32_t bits : {0u, 1u, 2u, 3u, 7u}) {
      p.bits = bits;
      object.particles.push_back(p);
    }
    const ParticleTable table = make_table(object, {true, true, true, true, true, true});
    const auto column = [&](const char* column_name) {
      const float* values = table.column(column_name);
      return values ? std::vector<float>(values, values + 5) : std::vector<float>();
    };
    using Column = std::vector<float>;
    EXPECT_EQ(column("active"), (Column{0, 0, 0, 1, 1}));
    EXPECT_EQ(column("position.z"), (Column{3, 3, 3, 3, 3})) << "in the world";
    EXPECT_EQ(column("velocity.x"), (Column{4, 4, 4, 4, 4}));
    EXPECT_EQ(column("velocity.z"), (Column{-6, -6, -6, -6, -6})) << "the grid's z runs back";
    EXPECT_EQ(column("age"), (Column{7, 7, 7, 7, 7}));
    EXPECT_EQ(column("mass"), Column(name == "g" ? 5 : 0, 8));
    EXPECT_EQ(column("size"), Column(name == "g" ? 5 : 0, 9));
  }
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
