#include "C4D/shading_settings.h"

#include <gtest/gtest.h>

#include "cache/grid_type.h"
#include "glue/test_document.h"
#include "render/direct_light_field.h"
#include "render/scattered_light_field.h"

namespace nbx {
namespace {

std::string volume(const std::string& parameters, const std::string& tags = "") {
  return R"({"type": "volume", "name": "v", "parameters": {)" + parameters + R"(}, "tags": [)" +
         tags + "]}";
}

TEST(ShadingSettings, CompositingTagHidesVolumesFromRays) {
  const std::uint32_t all = 8 | 16 | 32 | 64;
  const struct {
    const char* parameters;
    std::uint32_t outer, inner;
  } cases[] = {
      {"", 0, 0},
      {R"("seen_by_camera": false)", 1, 1},
      {R"("cast_shadows": false)", 2, 0},
      {R"("self_shadow": false)", 0, 2},
      {R"("seen_by_rays": false)", all, all},
      {R"("seen_by_gi": false)", 32, 32},
      {R"("seen_by_transparency": false)", 4, 4},
      {R"("seen_by_refraction": false)", 16, 16},
      {R"("seen_by_reflection": false)", 8, 8},
      {R"("seen_by_ao": false, "cast_shadows": false)", 64 | 2, 64},
  };
  for (const auto& [parameters, outer, inner] : cases) {
    test::TestDocument document(
        volume("", std::string(R"({"type": "compositing", "parameters": {)") + parameters + "}}"));
    RenderVolume target;
    target.excludeMask = target.innerExcludeMask = 1u << 20;
    read_compositing(target, document.object("v"));
    EXPECT_EQ(target.excludeMask, outer) << parameters;
    EXPECT_EQ(target.innerExcludeMask, inner) << parameters;
  }
  // A tag holds for what lies under its object, too, but for what has a tag of its own.
  const std::string matte = R"({"type": "compositing", "parameters": {"matte": true}})";
  for (const bool own : {false, true}) {
    test::TestDocument group(
        R"({"type": "null", "tags": [{"type": "compositing", "parameters": {"seen_by_gi": false}}],
            "children": [{"type": "null", "children": [)" +
        volume("", own ? matte : "") + "]}]}");
    RenderVolume target;
    read_compositing(target, group.object("v"));
    EXPECT_EQ(target.excludeMask, own ? 0u : 32u);
    EXPECT_EQ(target.matte, own);
  }
}

TEST(ShadingSettings, ReadsShaders) {
  test::TestDocument document(volume(R"("smoke_channel": "density", "fire_channel": "burn",
    "fire_density_channel": "ramp_y", "fire_color_mode": "gradient", "fire_gradient_scale": 3,
    "fire_gradient": [[0, [0, 0, 0]], [1, [1, 0.5, 0]]], "filter": "linear",
    "smoke_curve": [[0, 1], [1, 0]])"));
  const VolumeParams params = shading_params(document.object("v"));
  EXPECT_EQ(params.smoke.channel, kGridDensity);
  EXPECT_EQ(params.smoke.densityChannel, kNoGrid);
  EXPECT_EQ(params.smoke.density, 15);
  EXPECT_GT(params.smoke.curve.evaluate(0.25f), 0.5f);
  EXPECT_EQ(params.fire.channel, kGridBurn);
  EXPECT_EQ(params.fire.densityChannel, kRampY);
  EXPECT_EQ(params.fire.ramp->lookup(1.0f), (Color{3, 1.5f, 0}));
  EXPECT_EQ(params.filter, Filter::kLinear);

  // As they are when nothing is set: fire from the temperature, no smoke.
  test::TestDocument plain(volume(""));
  const VolumeParams defaults = shading_params(plain.object("v"));
  EXPECT_EQ(defaults.smoke.channel, kNoGrid);
  EXPECT_EQ(defaults.fire.channel, kGridTemperature);
  EXPECT_FLOAT_EQ(defaults.fire.curve.evaluate(0.16f), 1);
  EXPECT_EQ(defaults.filter, Filter::kBSpline);
  EXPECT_NE(defaults.smoke.ramp->lookup(0.5f), (Color{0, 0, 0})) << "smoke without a gradient";
}

TEST(ShadingSettings, ChoosesTheLightField) {
  const auto made = [](const char* parameters) {
    test::TestDocument document(volume(parameters));
    return make_light_field(document.object("v"), {0, 0, 0});
  };
  EXPECT_TRUE(std::dynamic_pointer_cast<DirectLightField>(made("")));
  EXPECT_TRUE(std::dynamic_pointer_cast<DirectLightField>(made(R"("light_mode": "exact")")));
  EXPECT_TRUE(std::dynamic_pointer_cast<ScatteredLightField>(made(R"("multi_scatter": true)")));
  EXPECT_FALSE(made(R"("light_mode": "none", "multi_scatter": true)"));
}

}  // namespace
}  // namespace nbx
