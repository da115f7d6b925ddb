#include "host/format/document_writer.h"
#include "host/format/overrides.h"
#include "tests/host/render/shot.h"

namespace host::test {
namespace {

std::string FogOf(double density, const std::string& more = "") {
  return R"("post_effects": [{"type": "fog", "parameters": {"density": )" +
         std::to_string(density) + more + "}}],";
}

const std::string kSun =
    R"({"type": "light", "rotation": [0, 90, 0], "parameters": {"type": "directional", "angle": 0}},)";
const std::string kMirror =
    R"("materials": [{"name": "mirror", "parameters": {"color": [0, 0, 0], "reflection": [1, 1, 1]}}],)";

TEST(RenderPostEffects, FogFillsTheLayersByItsDepth) {
  const double passing = std::exp(-0.01 * 100);
  const std::string scene = kSun + Camera("[0, 0, -300]", "[0, 0, 0]");
  const Pixel free =
      Shot{.samples = 4}.Take(scene + R"({"type": "null"})", FogOf(0.01)).pixels.front();
  EXPECT_NEAR(free.transmittance[1], passing, kPixelSpan);
  EXPECT_NEAR(free.alpha, 1 - passing, kPixelSpan);
  EXPECT_NEAR(free.color[2], 1 - passing, kPixelSpan);
  EXPECT_NEAR(free.volume[0], 0.5 * (1 - passing), kPixelSpan);
  EXPECT_TRUE(std::isinf(free.depth));
  // A wall through the center of the ball ends the ray there.
  const std::string wall = R"({"type": "plane", "rotation": [0, -90, 0]})";
  const Pixel half = Shot{.samples = 4}.Take(scene + wall, FogOf(0.01)).pixels.front();
  EXPECT_NEAR(half.transmittance[1], std::exp(-0.01 * 50), kPixelSpan);
  EXPECT_EQ(half.alpha, 1);
  EXPECT_NEAR(half.depth, 300, 1e-3);
}

TEST(RenderPostEffects, FogShowsInMirrors) {
  // The camera is between fog and mirror, facing away from the fog.
  const std::string mirror =
      R"({"type": "plane", "position": [0, 0, 200], "rotation": [0, -90, 0], "tags": [{"type": "texture", "parameters": {"material": "mirror"}}]})";
  const std::string scene = kSun + Camera("[0, 0, 100]", "[0, 0, 0]") + mirror;
  for (const char* encoded : {"", R"(, "encoded": true)"}) {
    SCOPED_TRACE(encoded);
    Fog::seen_types = 0;
    const Vector color = Shot{}.Color(scene, kMirror + FogOf(0.01, encoded));
    ExpectNear(color, Fog::kGlow * (1 - std::exp(-1.0)), kPixelSpan);
    EXPECT_EQ(Fog::seen_types, 1U << kRayCamera | 1U << kRayReflection);
  }
}

TEST(RenderPostEffects, ScenesKeepTheirParameters) {
  const std::string text = "{" + FogOf(0.5) + "\"objects\": []}";
  const auto& classes = FogHost().Classes();
  const auto document = ReadDocument(text, "/", classes);
  ApplyOverrides(*document, {"Fog.encoded=true"});
  const auto again = ReadDocument(WriteDocument(*document, "/"), "/", classes);
  EXPECT_TRUE(again->VideoPosts().front()->GetDataInstance().GetBool(Fog::kEncoded));
  EXPECT_EQ(WriteDocument(*again, "/"), WriteDocument(*document, "/"));
  EXPECT_EQ(ReadDocument("{}", "/", classes)->VideoPosts().size(), 1U);
  EXPECT_THROW(
      ReadDocument(R"({"post_effects": [{"type": "fog"}, {"type": "fog"}]})", "/", classes),
      DocumentError);
}

TEST(RenderPostEffects, LightQueriesWorkForPointsInSpace) {
  const auto document = Opened(
      kSun +
          R"({"type": "light", "position": [0, 0, 90], "parameters": {"radius": 20, "color": [4, 2, 1]}},)"
          R"({"type": "plane", "position": [0, -200, 0]})",
      FogOf(0.01));
  OpenFrame frame(*document, {{0}, 1, 1, {0, 0, 1, 1}, {}, 2});
  VolumeData& query = frame.session.GetVolumeData(1);
  ASSERT_EQ(query.GetLightCount(), 2);
  Vector color, direction, again;
  EXPECT_TRUE(query.Illuminate(0, {0, -20, 0}, color, direction));
  ExpectNear(direction, {0, 1, 0}, 1e-9);
  ExpectNear(color, Vector{1, 1, 1} * std::exp(-0.7), 1e-9);
  query.Illuminate(0, {0, -201, 0}, color, direction);
  ExpectNear(color, {}, 0);
  // An area light gives the same answer in every query.
  EXPECT_TRUE(query.Illuminate(1, {0, 0, 0}, color, direction));
  EXPECT_GT(direction.z, 0.99);
  EXPECT_NEAR(color.x, 4 * std::exp(-0.5), 0.01);
  frame.session.GetVolumeData(0).Illuminate(1, {0, 0, 0}, again, direction);
  EXPECT_EQ(color, again);
}

}  // namespace
}  // namespace host::test
