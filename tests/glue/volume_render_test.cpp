// Pictures of volumes whose smoke is known, through the host's renderer.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "C4D/host_access.h"
#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "host/render/render_run.h"
#include "support/support.h"
#include "tests/host/render/shot.h"

namespace nbx {
namespace {

constexpr double kRadius = 30, kVoxel = 2;  // of the ball of smoke, in units
constexpr int kCells = 40;                  // of the domain along an axis

host::SmallHost& smoke_host() {
  static host::SmallHost* const with_smoke = [] {
    auto* made = new host::SmallHost;  // lives as long as the documents of the tests
    register_volume_object(*made, "Volume");
    register_volume_tag(*made, "Emitter");
    register_volume_renderer(*made, "Smoke and Fire");
    set_host_services(made);
    return made;
  }();
  return *with_smoke;
}

// A frame with a ball of density 1 in the middle of a domain of kCells^3. Cells on the surface hold
// their share of it, so that chords through the cells come out right.
void write_ball(const std::string& directory) {
  const int n = kCells + 2;
  auto density = std::make_shared<Field<float>>(n, n, n);
  const double radius = kRadius / kVoxel, middle = (n - 1) / 2.0;
  for (int k = 0; k < n; ++k)
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const double r = std::hypot(i - middle, j - middle, k - middle);
        (*density)(i, j, k) = static_cast<float>(std::clamp(radius - r + 0.5, 0.0, 1.0));
      }
  SimFrame frame;
  GridMatrix m{};  // an object at the origin: domain cell = F p / voxel + size / 2 - 1/2
  m[0] = m[5] = m[10] = 1 / kVoxel;
  m[12] = m[13] = m[14] = kCells / 2 - 0.5;
  m[15] = 1;
  frame.simTime = frame.frameTime = {{0, 1}, {1, 25}};
  frame.add(density, kGridDensity, {-1, -1, -1}, m);
  ASSERT_GT(frame.write(directory + "/" + frame_file_name(cache_prefix(directory), 0, 0),
                        Codec::kRunLength),
            0u);
}

// 0.02 a unit of extinction.
std::string smoke(const std::string& cache, const std::string& place,
                  const std::string& more = "") {
  return R"({"type": "volume", "name": "smoke", )" + place + R"("parameters": {"cache_name": ")" +
         cache +
         R"(", "size": [80, 80, 80], "voxel_size": 2, "smoke_channel": "density",
         "fire_channel": "none", "smoke_density": 2, "filter": "linear",
         "smoke_gradient": [[0, [1, 1, 1]], [1, [1, 1, 1]]])" +
         more + "}},";
}

std::unique_ptr<host::Document> open_scene(const std::string& objects,
                                           const std::string& effect = "") {
  auto document =
      host::ReadDocument(R"({"post_effects": [{"type": "smoke", "parameters": {)" + effect +
                             R"(}}], "objects": [)" + objects + R"({"type": "null"}]})",
                         "/", smoke_host().Classes());
  document->Open();
  return document;
}

host::Pixel pixel(const std::string& objects, int samples = 16) {
  const auto document = open_scene(objects);
  return host::test::Shot{.samples = samples}.TakeOf(*document).pixels.front();
}

const std::string kSun =
    R"({"type": "light", "name": "sun", "rotation": [0, 90, 0], "parameters": {"type": "directional", "angle": 0, "exclude": [EXCLUDE]}},)";
std::string sun(const std::string& excluded = "") {
  std::string text = kSun;
  return text.replace(text.find("EXCLUDE"), 7, excluded);
}

double chord(double x) {
  return std::abs(x) < kRadius ? 2 * std::sqrt(kRadius * kRadius - x * x) : 0;
}

TEST(VolumeRender, BallCastsTheShadowOfABall) {
  const test::TemporaryFolder folder;
  write_ball(folder.path());
  const std::string floor = R"({"type": "plane", "position": [100, -60, 0]},)";
  for (const double x : {0.0, 12.0, 24.0, 40.0}) {
    const std::string camera =
        host::test::Camera("[" + std::to_string(100 + x) + ", -55, 0]", "[0, 90, 0]");
    // The object was moved after the run, and the smoke with it.
    const auto seen =
        pixel(sun() + camera + floor + smoke(folder.path(), R"("position": [100, 0, 0], )"));
    EXPECT_NEAR(seen.color[0], 0.8 * std::exp(-0.02 * chord(x)), 0.008) << x;
    if (x > kRadius) {
      EXPECT_NEAR(seen.color[0], 0.8, 1e-3);
    }
  }
}

struct Seen {
  host::Vector color, transparency;
  bool encoded = false;
};

// What rays of all types see along z through the middle of the ball, while a frame is open.
std::map<std::uint32_t, Seen> seen_by_types(const std::string& objects, const char* effect = "") {
  const auto document = open_scene(objects, effect);
  const host::RenderJob job{{0}, 1, 1, {0, 0, 1, 1}, {}, 1};
  test::RecordingContext context(smoke_host());
  host::RenderSession session(*document, job, context);
  host::RenderScene scene(*document, job.quality, 1, 1);
  session.SetFrame(0, scene);
  host::BaseVideoPost& node = *document->VideoPosts().front();
  auto& data = static_cast<host::VideoPostData&>(*node.GetNodeData());
  scene.effects = {&data};
  const auto execute = [&](host::RenderPhase phase, bool open) {
    data.Execute(node, phase, open, session);
  };
  execute(host::RenderPhase::Sequence, true);
  execute(host::RenderPhase::Frame, true);
  std::map<std::uint32_t, Seen> seen;
  for (const std::uint32_t type : {0, 0x1, 0x2, 0x4, 0x10, 0x20, 0x40, 0x80, 0x400, 0x2000}) {
    host::RayCounts counts;
    host::VolumeQuery query(scene, 0, counts);
    query.ray.origin = {0, 0, -500};
    query.ray.direction = {0, 0, 1};
    query.ray.type = type;
    query.AskVolumetric();
    seen[type] = {query.color, query.transparency, query.encoded};
  }
  execute(host::RenderPhase::Frame, false);
  execute(host::RenderPhase::Sequence, false);
  return seen;
}

// Each type of ray passes the volumes that are hidden from it and no others, and all see the same
// light and shade, whether the effect hands it over in encoded form or not.
TEST(VolumeRender, TypesOfRaysSeeWhatIsntHiddenFromThem) {
  const test::TemporaryFolder folder;
  write_ball(folder.path());
  const struct {
    const char* hidden;
    std::set<std::uint32_t> from;
  } cases[] = {
      {"seen_by_ao", {host::kRayOcclusion}},
      {"seen_by_camera", {host::kRayCamera}},
      {"seen_by_gi", {host::kRayIndirect}},
      {"seen_by_rays", {0x1, 0x4, 0x10, 0x40, 0x400, 0x2000}},
      {"seen_by_reflection", {host::kRayReflection, host::kRayRoughReflection}},
      {"seen_by_refraction", {host::kRayRefraction, host::kRayRoughRefraction}},
      {"seen_by_transparency", {host::kRayTransparency, host::kRayRoughTransparency}},
      {"cast_shadows", {}},
  };
  for (const auto& [hidden, from] : cases) {
    const std::string tag = R"("tags": [{"type": "compositing", "parameters": {")" +
                            std::string(hidden) + R"(": false}}], )";
    for (const auto& [type, seen] : seen_by_types(smoke(folder.path(), tag)))
      EXPECT_NEAR(seen.transparency.x, from.contains(type) ? 1 : std::exp(-0.02 * chord(0)), 0.008)
          << hidden << " " << type;
  }
  const auto plain = seen_by_types(sun() + smoke(folder.path(), ""), R"("gamma": false)");
  for (const auto& [type, seen] : seen_by_types(sun() + smoke(folder.path(), ""))) {
    EXPECT_TRUE(seen.encoded && !plain.at(type).encoded);
    EXPECT_NEAR(seen.transparency.x, plain.at(type).transparency.x, 1e-5) << type;
    EXPECT_NEAR(seen.color.x, plain.at(type).color.x, 1e-5) << type;
    EXPECT_GT(seen.color.x, 0.1);
  }
}

// What the run saved beside the frames tells where the ball lies in its object, whatever became of
// the object and its domain. The ball of the frame is in the middle of the run's object.
TEST(VolumeRender, GasStaysWhereItWasInItsObject) {
  const auto seen_at = [](const std::string& now, const char* then, double x) {
    const test::TemporaryFolder folder;
    write_ball(folder.path());
    const auto scene = [&](const std::string& volume) {
      return smoke(folder.path(), "").replace(0, 1, "{" + volume);
    };
    const auto at = [&](const std::string& size) {
      std::string text = scene(now);
      return text.replace(text.find("[80, 80, 80]"), 12, size);
    };
    if (then) {
      std::string text = scene(then);
      // A size with keyframes has no value beside them.
      if (text.find("parameters.size") != std::string::npos)
        text.erase(text.find("\"size\""), std::string(R"("size": [80, 80, 80], )").size());
      const auto saved = open_scene(text);
      smoke_host().SaveDocument(*saved, {folder.file("Autosave.c4d")}, host::kSceneFormat);
    }
    const std::string camera =
        host::test::Camera("[" + std::to_string(x) + ", 0, -500]", "[0, 0, 0]");
    // The domain is larger, smaller, and as it was.
    std::vector<double> depths;
    for (const char* size : {"[120, 80, 100]", "[60, 60, 80]", "[80, 80, 80]"})
      depths.push_back(-std::log(pixel(sun() + camera + at(size)).transmittance[0]) / 0.02);
    return depths;
  };
  const std::string moved = R"("position": [100, 0, 0], )";
  for (const double x : {0.0, 18.0, 27.0}) {
    for (const double depth : seen_at("", "", x)) EXPECT_NEAR(depth, chord(x), 2) << x;
    for (const double depth : seen_at(moved, "", 100 + x)) EXPECT_NEAR(depth, chord(x), 2) << x;
    // While the object moved, and a frame's matrix is that of some time within it.
    for (const double depth : seen_at(
             moved, R"("keyframes": {"position": [[-1, [0, 0, 0]], [0, [4, 0, 0]]]}, )", 100 + x))
      EXPECT_NEAR(depth, chord(x), 2) << x;
    // While the domain grew: its size at the frame's end isn't the one of the frame.
    for (const double depth : seen_at("", R"("keyframes": {"parameters.size":
                                      [[-1, [80, 80, 80]], [0, [100, 100, 100]]]}, )",
                                      x))
      EXPECT_NEAR(depth, chord(x), 2) << x;
  }
  // Nothing was saved: a frame that isn't of the object's domain stays in the world.
  EXPECT_NEAR(seen_at("", nullptr, 18)[1], chord(18), 2);
  EXPECT_NEAR(seen_at(moved, nullptr, 118)[2], chord(18), 2);
}

TEST(VolumeRender, OpacityIsThatOfTheUnscaledBall) {
  const test::TemporaryFolder folder;
  write_ball(folder.path());
  for (const double scale : {1.0, 3.0}) {
    const std::string s = std::to_string(scale);
    const auto seen = pixel(sun() + host::test::Camera("[0, 0, -500]", "[0, 0, 0]") +
                            smoke(folder.path(), "\"scale\": [" + s + "," + s + "," + s + "], "));
    EXPECT_NEAR(seen.transmittance[1], std::exp(-0.02 * chord(0)), 0.008) << scale;
    EXPECT_NEAR(seen.alpha, 1 - seen.transmittance[1], 1e-5);
    EXPECT_GT(seen.color[0], 0.1);
  }
}

TEST(VolumeRender, ObeysWhatHidesIt) {
  const test::TemporaryFolder folder;
  write_ball(folder.path());
  const std::string camera = host::test::Camera("[0, 0, -500]", "[0, 0, 0]");
  const auto dark = pixel(sun("\"smoke\"") + camera + smoke(folder.path(), ""));
  EXPECT_EQ(dark.color[0], 0);
  EXPECT_GT(dark.alpha, 0.6);
  const auto hidden = pixel(
      sun() + camera +
      smoke(folder.path(),
            R"("tags": [{"type": "compositing", "parameters": {"seen_by_camera": false}}], )"));
  EXPECT_EQ(hidden.alpha, 0);
  // Out of pictures by its own setting or by that of what is above it.
  const std::string off = R"("visible_in_render": false, )", on = R"("visible_in_render": true, )";
  for (const auto& [group, own, seen] :
       {std::tuple(off, std::string(), false), {"", off, false}, {off, on, true}, {on, "", true}}) {
    std::string volume = smoke(folder.path(), own);
    volume.pop_back();
    const std::string whole = R"({"type": "null", )" + group + R"("children": [)" + volume + "]},";
    EXPECT_EQ(pixel(sun() + camera + whole).alpha > 0, seen) << group << own;
  }
  const auto lit = pixel(sun() + camera + smoke(folder.path(), ""));
  const auto unshadowed =
      pixel(sun() + camera +
            smoke(folder.path(),
                  R"("tags": [{"type": "compositing", "parameters": {"self_shadow": false}}], )"));
  EXPECT_GT(unshadowed.color[0], 1.1f * lit.color[0]);
  EXPECT_NEAR(unshadowed.color[0], unshadowed.alpha, 0.01) << "white smoke in full light";
}

}  // namespace
}  // namespace nbx
