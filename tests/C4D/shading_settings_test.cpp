#include "C4D/settings/shading_settings.h"

#include "C4D/test_document.h"

namespace nbx {
namespace {

std::string volume(const std::string& parameters, const std::string& tags = "") {
  return R"({"type": "volume", "name": "v", "parameters": {)" + parameters + R"(}, "tags": [)" +
         tags + "]}";
}

TEST(ShadingSettings, CompositingTagHidesVolumesFromRays) {
  const std::uint32_t all = kReflectionRay | kRefractionRay | kIndirectRay | kOcclusionRay;
  const struct {
    const char* parameters;
    std::uint32_t outer, inner;
  } cases[] = {
      {"", 0, 0},
      {R"("seen_by_camera": false)", kCameraRay, kCameraRay},
      {R"("cast_shadows": false)", kShadowRay, 0},
      {R"("self_shadow": false)", 0, kShadowRay},
      {R"("seen_by_rays": false)", all, all},
      {R"("seen_by_gi": false)", kIndirectRay, kIndirectRay},
      {R"("seen_by_transparency": false)", kTransparencyRay, kTransparencyRay},
      {R"("seen_by_refraction": false)", kRefractionRay, kRefractionRay},
      {R"("seen_by_reflection": false)", kReflectionRay, kReflectionRay},
      {R"("seen_by_ao": false, "cast_shadows": false)", kOcclusionRay | kShadowRay, kOcclusionRay},
  };
  const auto read = [](const std::string& objects) {
    test::TestDocument document(objects);
    RenderVolume target;
    target.excludeMask = target.innerExcludeMask = 1u << 20;
    read_compositing(target, document.object("v"));
    return target;
  };
  const auto tag = [](const std::string& parameters) {
    return R"({"type": "compositing", "parameters": {)" + parameters + "}}";
  };
  for (const auto& [parameters, outer, inner] : cases) {
    const RenderVolume target = read(volume("", tag(parameters)));
    EXPECT_EQ(target.excludeMask, outer) << parameters;
    EXPECT_EQ(target.innerExcludeMask, inner) << parameters;
    EXPECT_FALSE(target.matte);
  }
  EXPECT_EQ(read(volume("", tag(R"("matte": true, "matte_color": [0.5, 0, 0.25])"))).matteColor,
            (Color{0.5f, 0, 0.25f}));
  // A tag also applies to the children of its object that have no such tag.
  for (const bool own : {false, true}) {
    const RenderVolume target =
        read(R"({"type": "null", "tags": [)" + tag(R"("seen_by_gi": false)") +
             R"(], "children": [{"type": "null", "children": [)" +
             volume("", own ? tag(R"("matte": true)") : "") + "]}]}");
    EXPECT_EQ(target.excludeMask, own ? 0u : std::uint32_t{kIndirectRay});
    EXPECT_EQ(target.matte, own);
  }
}

TEST(ShadingSettings, FireGradientIsScaled) {
  test::TestDocument document(volume(R"("fire_color_mode": "gradient", "fire_gradient_scale": 3,
    "fire_gradient": [[0, [0, 0, 0]], [1, [1, 0.5, 0]]])"));
  EXPECT_EQ(shading_params(document.object("v")).fire.ramp->lookup(1.0f), (Color{3, 1.5f, 0}));
}

}  // namespace
}  // namespace nbx
