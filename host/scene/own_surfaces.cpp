#include "host/interface/camera.h"
#include "host/interface/compositing.h"
#include "host/interface/material.h"
#include "host/scene/own_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

namespace {

ParameterInfo TextureLink(std::int32_t id, const char* symbol) {
  return Link(id, symbol, LinkTarget::Shader, "A texture that multiplies it");
}

ParameterInfo Length(std::int32_t id, const char* symbol) {
  return Real(id, symbol, 1, -kUnbounded, kUnbounded, "",
              "Of the picture, in the mesh's coordinates; 0 counts as 1");
}

}  // namespace

void AddMaterial(ElementClasses& materials) {
  Add(materials, kMaterial, "Material", "material", "What a surface is made of",
      {Color(MATERIAL_COLOR, "MATERIAL_COLOR", {0.8, 0.8, 0.8}, "Share of light scattered back"),
       TextureLink(MATERIAL_COLOR_TEXTURE, "MATERIAL_COLOR_TEXTURE"),
       Color(MATERIAL_EMISSION, "MATERIAL_EMISSION", {}, "Light that the surface sends out"),
       TextureLink(MATERIAL_EMISSION_TEXTURE, "MATERIAL_EMISSION_TEXTURE"),
       Color(MATERIAL_TRANSPARENCY, "MATERIAL_TRANSPARENCY", {}, "Share of light let through"),
       TextureLink(MATERIAL_TRANSPARENCY_TEXTURE, "MATERIAL_TRANSPARENCY_TEXTURE"),
       Real(MATERIAL_REFRACTION, "MATERIAL_REFRACTION", 1, 0.1, 10, "",
            "Index of refraction of what is let through; 1 bends nothing"),
       Color(MATERIAL_REFLECTION, "MATERIAL_REFLECTION", {},
             "Share of light mirrored, facing the surface"),
       Real(MATERIAL_ROUGHNESS, "MATERIAL_ROUGHNESS", 0, 0, 1, "",
            "Of the mirror: 0 sharp, 1 fully blurred"),
       TextureLink(MATERIAL_MASK_TEXTURE, "MATERIAL_MASK_TEXTURE")});
}

void AddOwnTags(ElementClasses& tags) {
  Add(tags, kTextureTag, "Texture", "texture", "Puts a material on the object",
      {Link(TEXTURETAG_MATERIAL, "TEXTURETAG_MATERIAL", LinkTarget::Material, "The material"),
       Any(TEXTURETAG_SELECTION, "TEXTURETAG_SELECTION", std::string(), "",
           "Name of a selection tag of the object, for these polygons only; empty: for all"),
       Real(TEXTURETAG_OFFSET_U, "TEXTURETAG_OFFSET_U", 0, -kUnbounded, kUnbounded, "",
            "Where the picture starts"),
       Real(TEXTURETAG_OFFSET_V, "TEXTURETAG_OFFSET_V", 0, -kUnbounded, kUnbounded, "",
            "Where the picture starts"),
       Length(TEXTURETAG_LENGTH_U, "TEXTURETAG_LENGTH_U"),
       Length(TEXTURETAG_LENGTH_V, "TEXTURETAG_LENGTH_V"),
       Flag(TEXTURETAG_TILE, "TEXTURETAG_TILE", true, "The picture repeats itself"),
       Flag(TEXTURETAG_MIRROR, "TEXTURETAG_MIRROR", false, "Every second one runs backwards")});
  const auto on = [](std::int32_t id, const char* symbol, const char* help) {
    return Flag(id, symbol, true, help);
  };
  Add(tags, kCompositingTag, "Compositing", "compositing", "Which rays meet the object",
      {on(COMPOSITING_CAST_SHADOWS, "COMPOSITING_CAST_SHADOWS", "Shadows on other things"),
       on(COMPOSITING_SELF_SHADOW, "COMPOSITING_SELF_SHADOW", "Shadows within volumes"),
       on(COMPOSITING_SEEN_BY_CAMERA, "COMPOSITING_SEEN_BY_CAMERA", "Rays from the camera"),
       on(COMPOSITING_SEEN_BY_RAYS, "COMPOSITING_SEEN_BY_RAYS",
          "All of reflection, refraction, GI and AO"),
       on(COMPOSITING_SEEN_BY_TRANSPARENCY, "COMPOSITING_SEEN_BY_TRANSPARENCY",
          "Rays that go straight through a surface"),
       on(COMPOSITING_SEEN_BY_REFLECTION, "COMPOSITING_SEEN_BY_REFLECTION", "Mirrored rays"),
       on(COMPOSITING_SEEN_BY_REFRACTION, "COMPOSITING_SEEN_BY_REFRACTION", "Bent rays"),
       on(COMPOSITING_SEEN_BY_GI, "COMPOSITING_SEEN_BY_GI", "Rays of indirect light"),
       on(COMPOSITING_SEEN_BY_AO, "COMPOSITING_SEEN_BY_AO", "Rays of ambient occlusion"),
       Flag(COMPOSITING_MATTE, "COMPOSITING_MATTE", false, "The object is all of one color"),
       Color(COMPOSITING_MATTE_COLOR, "COMPOSITING_MATTE_COLOR", {}, "That color")});
  Add(tags, kSelectionTag, "Selection", "selection",
      "A set of polygons of the mesh, given as \"polygons\" beside the name", {});
}

void AddOwnShaders(ElementClasses& shaders) {
  const auto colors = [](std::vector<ParameterInfo> more) {
    more.push_back(Color(kShaderColorA, "SHADER_COLOR_A", {}, "One end of the colors"));
    more.push_back(Color(kShaderColorB, "SHADER_COLOR_B", {1, 1, 1}, "The other end"));
    more.push_back(Any(kShaderOffset, "SHADER_OFFSET", Vector{}, "", "Where the texture starts"));
    return more;
  };
  const auto scale = [](const char* help) {
    return Real(kShaderScale, "SHADER_SCALE", 1, 1e-6, 1e9, "", help);
  };
  Add(shaders, kImageShader, "Image", "image", "A picture from a file",
      {Any(kShaderFile, "SHADER_FILE", Filename{}, "", "PNG, JPEG, BMP, or PPM file"),
       Still(Flag(kShaderLinear, "SHADER_LINEAR", false,
                  "The file's numbers are light; else they are sRGB-coded"))});
  Add(shaders, kNoiseShader, "Noise", "noise", "Clouds in space that change in time",
      colors({scale("Size of the largest clouds"),
              Still(Whole(kShaderOctaves, "SHADER_OCTAVES", 4, 1, 16,
                          "Layers, each with half the size and half the weight")),
              Real(kShaderSpeed, "SHADER_SPEED", 0, -1e6, 1e6, "per second",
                   "How fast the clouds change; 1: to wholly others in a second"),
              Real(kShaderContrast, "SHADER_CONTRAST", 1, 0, 1e6, "",
                   "Factor on the distance to the middle of the colors"),
              Still(Whole(kShaderSeed, "SHADER_SEED", 0, 0, 2147483647,
                          "Another number gives other clouds"))}));
  Add(shaders, kCheckerShader, "Checker", "checker", "Cubes of two colors",
      colors({scale("Edge of a cube")}));
  Add(shaders, kGradientShader, "Gradient", "gradient", "From one color to the other on a line",
      colors({scale("Length of the way from the one to the other"),
              Any(kShaderDirection, "SHADER_DIRECTION", Vector{1, 0, 0}, "",
                  "Which way the colors go")}));
}

const ElementClasses& RenderClasses() {
  static const ElementClasses render = [] {
    ElementClasses one;
    Add(one, kRenderData, "render", "render", "Size and quality of pictures",
        {Still(Whole(RENDER_WIDTH, "RENDER_WIDTH", 960, 1, 16384, "Pixels")),
         Still(Whole(RENDER_HEIGHT, "RENDER_HEIGHT", 540, 1, 16384, "Pixels")),
         Still(Whole(RENDER_SAMPLES, "RENDER_SAMPLES", 16, 1, 65536, "Of a pixel")),
         Color(RENDER_BACKGROUND, "RENDER_BACKGROUND", {}, "Light of what hits nothing"),
         Link(RENDER_CAMERA, "RENDER_CAMERA", LinkTarget::Object,
              "The camera to look through; none: the first one"),
         Still(Real(RENDER_SHUTTER, "RENDER_SHUTTER", 0, 0, 1, "frames",
                    "Surfaces and camera blur by their way in this time, from the frame on")),
         Still(Whole(RENDER_BOUNCES, "RENDER_BOUNCES", 0, 0, 16,
                     "Of light between diffuse surfaces; from 1 on flames light what is near")),
         Still(Real(RENDER_FRAME_RATE, "RENDER_FRAME_RATE", 0, 0, 10000, "frames per second",
                    "Of the pictures; 0: the document's"))});
    return one;
  }();
  return render;
}

}  // namespace host
