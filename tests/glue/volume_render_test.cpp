// Pictures of volumes whose smoke is known, through the host's renderer.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

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

host::Pixel pixel(const std::string& objects, int samples = 16) {
  const auto document = host::ReadDocument(
      R"({"post_effects": [{"type": "smoke"}], "objects": [)" + objects + R"({"type": "null"}]})",
      "/", smoke_host().Classes());
  document->Open();
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
