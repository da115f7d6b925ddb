// Pictures of volumes whose smoke is known, through the host's renderer.
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "C4D/services/host_access.h"
#include "C4D/test_document.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "host/format/document_writer.h"
#include "tests/host/render/shot.h"

namespace nbx {
namespace {

constexpr double kRadius = 30, kVoxel = 2;  // of the ball of smoke, in units
constexpr int kCells = 40;                  // of the domain along an axis

// A cache with a frame with a ball of density 1 in the middle of a domain of kCells^3. Cells on the
// surface hold their share of it, so that chords through the cells come out right.
class VolumeRender : public testing::Test {
 protected:
  VolumeRender() {
    set_host_services(&loader.host());
    std::filesystem::create_directory(cache);
    const int n = kCells + 2;
    auto density = std::make_shared<Field<float>>(n, n, n);
    const double radius = kRadius / kVoxel, middle = (n - 1) / 2.0;
    test::each_cell(density->dims(), 0, [&](int i, int j, int k) {
      const double r = std::hypot(i - middle, j - middle, k - middle);
      (*density)(i, j, k) = static_cast<float>(std::clamp(radius - r + 0.5, 0.0, 1.0));
    });
    SimFrame frame;
    // An object at the origin: domain cell = F p / voxel + size / 2 - 1/2.
    constexpr double middle_cell = kCells / 2 - 0.5;
    const GridMatrix m{1 / kVoxel, 0, 0,          0, 0,           1 / kVoxel,  0,           0,
                       0,          0, 1 / kVoxel, 0, middle_cell, middle_cell, middle_cell, 1};
    frame.simTime = frame.frameTime = {{0, 1}, {1, 25}};
    frame.add(density, kGridDensity, {-1, -1, -1}, m);
    EXPECT_GT(
        frame.write(cache + "/" + frame_file_name(cache_prefix(cache), 0, 0), Codec::kRunLength),
        0u);
  }

  ~VolumeRender() override { set_host_services(nullptr); }

  /// 0.02 a unit of extinction. `place` are members of the object next to its parameters.
  std::string smoke(const std::string& place = "",
                    const std::string& size = R"("size": [80, 80, 80], )") const {
    return R"({"type": "volume", "name": "smoke", )" + place + R"("parameters": {"cache_name": ")" +
           cache + "\", " + size + R"("voxel_size": 2, "smoke_channel": "density",
           "fire_channel": "none", "smoke_density": 2, "filter": "linear",
           "smoke_gradient": [[0, [1, 1, 1]], [1, [1, 1, 1]]]}},)";
  }

  test::TestDocument loader{""};  // its host opens what runs saved
  test::TemporaryFolder folder;
  std::string cache = folder.file("ball");
};

struct Scene : test::TestDocument {
  explicit Scene(const std::string& objects, const std::string& effect = "")
      : TestDocument(objects + R"({"type": "null"})",
                     R"("post_effects": [{"type": "smoke", "parameters": {)" + effect + "}}], ") {}
};

host::Pixel pixel(const std::string& objects) {
  return host::test::Shot{.samples = 16}.TakeOf(*Scene(objects)).pixels.front();
}

std::string sun(const std::string& excluded = "") {
  return R"({"type": "light", "name": "sun", "rotation": [0, 90, 0], "parameters":
             {"type": "directional", "angle": 0, "exclude": [)" +
         excluded + "]}},";
}

const std::string kFront = host::test::Camera("[0, 0, -500]", "[0, 0, 0]");

double chord(double x) {
  return std::abs(x) < kRadius ? 2 * std::sqrt(kRadius * kRadius - x * x) : 0;
}

TEST_F(VolumeRender, BallCastsTheShadowOfABall) {
  // The object was moved after the run, and the smoke with it. Smoke that doesn't shadow itself
  // still shadows the plane.
  const std::string moved = R"("position": [100, 0, 0], )";
  const std::string no_self_shadow =
      R"("tags": [{"type": "compositing", "parameters": {"self_shadow": false}}], )";
  for (const double x : {0.0, 12.0, 24.0, 40.0}) {
    const auto seen = pixel(
        sun() + host::test::Camera("[" + std::to_string(100 + x) + ", -55, 0]", "[0, 90, 0]") +
        R"({"type": "plane", "position": [100, -60, 0]},)" +
        smoke(x == 12 ? moved + no_self_shadow : moved));
    EXPECT_NEAR(seen.color[0], 0.8 * std::exp(-0.02 * chord(x)), x > kRadius ? 1e-3 : 0.008) << x;
  }
}

struct Seen {
  host::Vector color, transparency;
  bool encoded;
};

// What rays of all types see along z through the middle of the ball, while a frame is open.
std::map<std::uint32_t, Seen> seen_by_types(const std::string& objects, const char* effect = "") {
  Scene document(objects, effect);
  host::test::OpenFrame frame(*document, {{0}, 1, 1, {0, 0, 1, 1}, {}, 1});
  std::map<std::uint32_t, Seen> seen;
  host::RayCounts counts;
  for (const std::uint32_t type : {0, 0x1, 0x2, 0x4, 0x10, 0x20, 0x40, 0x80, 0x400, 0x2000}) {
    host::VolumeQuery query(frame.scene, 0, counts);
    query.ray.origin = {0, 0, -500};
    query.ray.direction = {0, 0, 1};
    query.ray.type = type;
    query.AskVolumetric();
    seen[type] = {query.color, query.transparency, query.encoded};
  }
  return seen;
}

// Each type of ray ignores the volumes that are hidden from it and no others. All types see the
// same light and shade, whether the effect returns it encoded or not.
TEST_F(VolumeRender, TypesOfRaysSeeWhatIsntHiddenFromThem) {
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
    for (const auto& [type, seen] : seen_by_types(smoke(tag)))
      EXPECT_NEAR(seen.transparency.x, from.contains(type) ? 1 : std::exp(-0.02 * chord(0)), 0.008)
          << hidden << " " << type;
  }
  const auto plain = seen_by_types(sun() + smoke(), R"("gamma": false)");
  for (const auto& [type, seen] : seen_by_types(sun() + smoke())) {
    EXPECT_TRUE(seen.encoded && !plain.at(type).encoded);
    EXPECT_NEAR(seen.transparency.x, plain.at(type).transparency.x, 1e-5) << type;
    EXPECT_NEAR(seen.color.x, plain.at(type).color.x, 1e-5) << type;
    EXPECT_GT(seen.color.x, 0.1);
  }
}

// The scene that the run saved determines where the ball lies in its object, however the object and
// its domain have changed since. The ball of the frame is in the middle of the run's object.
TEST_F(VolumeRender, GasStaysWhereItWasInItsObject) {
  const std::string moved = R"("position": [100, 0, 0], )", size = R"("size": [80, 80, 80], )";
  // Now the domain is larger, smaller, and as it was.
  const auto depth_at = [&](double x, const std::string& now, int domain) {
    const char* const sizes[] = {R"("size": [120, 80, 100], )", R"("size": [60, 60, 80], )",
                                 size.c_str()};
    const auto seen =
        pixel(sun() + host::test::Camera("[" + std::to_string(x) + ", 0, -500]", "[0, 0, 0]") +
              smoke(now, sizes[domain]));
    return -std::log(seen.transmittance[0]) / 0.02;
  };
  // Without a saved scene, a frame that doesn't fit the object's domain stays in the world.
  EXPECT_NEAR(depth_at(18, "", 1), chord(18), 2);
  EXPECT_NEAR(depth_at(118, moved, 2), chord(18), 2);
  const struct {
    std::string now, then, then_size;
  } cases[] = {
      {"", "", size},
      {moved, "", size},
      // The object moved during the frame, and the frame's matrix belongs to some time within it.
      {moved, R"("keyframes": {"position": [[-1, [0, 0, 0]], [0, [4, 0, 0]]]}, )", size},
      // The domain grew during the frame, so its size at the frame's end isn't that of the frame.
      {"", R"("keyframes": {"parameters.size": [[-1, [80, 80, 80]], [0, [100, 100, 100]]]}, )",
       ""}};
  for (const auto& [now, then, then_size] : cases) {
    // Each run has its own cache.
    std::filesystem::copy(folder.file("ball"), cache += "+");
    host::WriteDocumentFile(*Scene(smoke(then, then_size)), cache + "/Autosave.c4d");
    for (const double x : {0.0, 18.0, 27.0})
      for (int domain = 0; domain < 3; ++domain)
        EXPECT_NEAR(depth_at(now.empty() ? x : 100 + x, now, domain), chord(x), 2)
            << then << x << " " << domain;
  }
}

TEST_F(VolumeRender, OpacityIsThatOfTheUnscaledBallAndObeysWhatHidesIt) {
  const auto seen_scaled = pixel(sun() + kFront + smoke(R"("scale": [3, 3, 3], )"));
  EXPECT_NEAR(seen_scaled.transmittance[1], std::exp(-0.02 * chord(0)), 0.008);
  EXPECT_NEAR(seen_scaled.alpha, 1 - seen_scaled.transmittance[1], 1e-5);
  EXPECT_GT(seen_scaled.color[0], 0.1);
  const auto dark = pixel(sun("\"smoke\"") + kFront + smoke());
  EXPECT_EQ(dark.color[0], 0);
  EXPECT_GT(dark.alpha, 0.6);
  // Hidden by its own setting or by that of its parent.
  const std::string off = R"("visible_in_render": false, )", on = R"("visible_in_render": true, )";
  for (const auto& [group, own, seen] :
       {std::tuple(off, std::string(), false), {"", off, false}, {off, on, true}, {on, "", true}}) {
    const std::string all =
        R"({"type": "null", )" + group + R"("children": [)" + smoke(own) + R"({"type": "null"}]},)";
    EXPECT_EQ(pixel(sun() + kFront + all).alpha > 0, seen) << group << own;
  }
  const auto unshadowed =
      pixel(sun() + kFront +
            smoke(R"("tags": [{"type": "compositing", "parameters": {"self_shadow": false}}], )"));
  EXPECT_GT(unshadowed.color[0], 1.1f * pixel(sun() + kFront + smoke()).color[0]);
  EXPECT_NEAR(unshadowed.color[0], unshadowed.alpha, 0.01) << "white smoke in full light";
}

}  // namespace
}  // namespace nbx
