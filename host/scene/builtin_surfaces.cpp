#include "host/interface/camera.h"
#include "host/interface/compositing.h"
#include "host/interface/material.h"
#include "host/scene/builtin_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

namespace {

ParameterInfo TextureLink(std::int32_t id, const char* symbol) {
  return Link(id, symbol, LinkTarget::Shader, "Texture that multiplies the color");
}

ParameterInfo Length(std::int32_t id, const char* symbol) {
  return Real(id, symbol, 1, -kUnbounded, kUnbounded, "",
              "Length of the picture in texture coordinates of the mesh; 0 means 1");
}

}  // namespace

void AddMaterial(ElementClasses& materials) {
  Add(materials, kMaterial, "Material", "material",
      "Color, reflection and transparency of a surface",
      {Color(MATERIAL_COLOR, "MATERIAL_COLOR", {0.8, 0.8, 0.8},
             "Fraction of light that is scattered diffusely"),
       TextureLink(MATERIAL_COLOR_TEXTURE, "MATERIAL_COLOR_TEXTURE"),
       Color(MATERIAL_EMISSION, "MATERIAL_EMISSION", {}, "Light that the surface emits"),
       TextureLink(MATERIAL_EMISSION_TEXTURE, "MATERIAL_EMISSION_TEXTURE"),
       Color(MATERIAL_TRANSPARENCY, "MATERIAL_TRANSPARENCY", {},
             "Fraction of light that passes through"),
       TextureLink(MATERIAL_TRANSPARENCY_TEXTURE, "MATERIAL_TRANSPARENCY_TEXTURE"),
       Real(MATERIAL_REFRACTION, "MATERIAL_REFRACTION", 1, 0.1, 10, "",
            "Index of refraction of the transmitted light; 1: no refraction"),
       Color(MATERIAL_REFLECTION, "MATERIAL_REFLECTION", {},
             "Fraction of light that is mirrored at normal incidence"),
       Real(MATERIAL_ROUGHNESS, "MATERIAL_ROUGHNESS", 0, 0, 1, "",
            "Roughness of the reflection: 0 sharp, 1 fully blurred"),
       TextureLink(MATERIAL_MASK_TEXTURE, "MATERIAL_MASK_TEXTURE")});
}

void AddBuiltinTags(ElementClasses& tags) {
  Add(tags, kTextureTag, "Texture", "texture", "Assigns a material to the object",
      {Link(TEXTURETAG_MATERIAL, "TEXTURETAG_MATERIAL", LinkTarget::Material, "The material"),
       Any(TEXTURETAG_SELECTION, "TEXTURETAG_SELECTION", std::string(), "",
           "Selection tag of the object whose polygons get the material; empty: all polygons"),
       Real(TEXTURETAG_OFFSET_U, "TEXTURETAG_OFFSET_U", 0, -kUnbounded, kUnbounded, "",
            "Texture coordinate u at which the picture starts"),
       Real(TEXTURETAG_OFFSET_V, "TEXTURETAG_OFFSET_V", 0, -kUnbounded, kUnbounded, "",
            "Texture coordinate v at which the picture starts"),
       Length(TEXTURETAG_LENGTH_U, "TEXTURETAG_LENGTH_U"),
       Length(TEXTURETAG_LENGTH_V, "TEXTURETAG_LENGTH_V"),
       Flag(TEXTURETAG_TILE, "TEXTURETAG_TILE", true, "Repeats the picture"),
       Flag(TEXTURETAG_MIRROR, "TEXTURETAG_MIRROR", false, "Mirrors every second repetition")});
  const auto on = [](std::int32_t id, const char* symbol, const char* help) {
    return Flag(id, symbol, true, help);
  };
  Add(tags, kCompositingTag, "Compositing", "compositing", "Which rays see the object",
      {on(COMPOSITING_CAST_SHADOWS, "COMPOSITING_CAST_SHADOWS",
          "The object casts shadows on other objects"),
       on(COMPOSITING_SELF_SHADOW, "COMPOSITING_SELF_SHADOW", "Volumes cast shadows on themselves"),
       on(COMPOSITING_SEEN_BY_CAMERA, "COMPOSITING_SEEN_BY_CAMERA", "Camera rays see the object"),
       on(COMPOSITING_SEEN_BY_RAYS, "COMPOSITING_SEEN_BY_RAYS",
          "Off: hidden from reflection, refraction, GI and AO rays"),
       on(COMPOSITING_SEEN_BY_TRANSPARENCY, "COMPOSITING_SEEN_BY_TRANSPARENCY",
          "Rays that pass straight through a transparent surface see the object"),
       on(COMPOSITING_SEEN_BY_REFLECTION, "COMPOSITING_SEEN_BY_REFLECTION",
          "Mirrored rays see the object"),
       on(COMPOSITING_SEEN_BY_REFRACTION, "COMPOSITING_SEEN_BY_REFRACTION",
          "Refracted rays see the object"),
       on(COMPOSITING_SEEN_BY_GI, "COMPOSITING_SEEN_BY_GI", "Indirect light rays see the object"),
       on(COMPOSITING_SEEN_BY_AO, "COMPOSITING_SEEN_BY_AO",
          "Ambient occlusion rays see the object"),
       Flag(COMPOSITING_MATTE, "COMPOSITING_MATTE", false, "Shows the object in one flat color"),
       Color(COMPOSITING_MATTE_COLOR, "COMPOSITING_MATTE_COLOR", {}, "The flat color")});
  Add(tags, kSelectionTag, "Selection", "selection",
      "A set of polygons of the mesh, listed in \"polygons\"", {});
}

void AddBuiltinShaders(ElementClasses& shaders) {
  const auto colors = [](std::vector<ParameterInfo> more) {
    more.push_back(Color(kShaderColorA, "SHADER_COLOR_A", {}, "First color"));
    more.push_back(Color(kShaderColorB, "SHADER_COLOR_B", {1, 1, 1}, "Second color"));
    more.push_back(Any(kShaderOffset, "SHADER_OFFSET", Vector{}, "", "Origin of the texture"));
    return more;
  };
  const auto scale = [](const char* help) {
    return Real(kShaderScale, "SHADER_SCALE", 1, 1e-6, 1e9, "", help);
  };
  Add(shaders, kImageShader, "Image", "image", "A picture from a file",
      {Any(kShaderFile, "SHADER_FILE", Filename{}, "", "PNG, JPEG, BMP, or PPM file"),
       Still(Flag(kShaderLinear, "SHADER_LINEAR", false,
                  "The file contains linear light; off: sRGB"))});
  Add(shaders, kNoiseShader, "Noise", "noise", "Noise in space that changes over time",
      colors(
          {scale("Size of the largest features"),
           Still(Whole(kShaderOctaves, "SHADER_OCTAVES", 4, 1, 16,
                       "Number of layers; each has half the size and half the weight of the last")),
           Real(kShaderSpeed, "SHADER_SPEED", 0, -1e6, 1e6, "per second",
                "How fast the noise changes; 1: completely within a second"),
           Real(kShaderContrast, "SHADER_CONTRAST", 1, 0, 1e6, "",
                "Contrast around the middle of the two colors"),
           Still(Whole(kShaderSeed, "SHADER_SEED", 0, 0, 2147483647, "Seed of the noise"))}));
  Add(shaders, kCheckerShader, "Checker", "checker", "Cubes of two colors",
      colors({scale("Edge length of a cube")}));
  Add(shaders, kGradientShader, "Gradient", "gradient",
      "Blends from the first color to the second along a direction",
      colors({scale("Distance from the first color to the second"),
              Any(kShaderDirection, "SHADER_DIRECTION", Vector{1, 0, 0}, "",
                  "Direction of the gradient")}));
}

const ElementClasses& RenderClasses() {
  static const ElementClasses render = [] {
    ElementClasses one;
    Add(one, kRenderData, "render", "render", "Size and quality of pictures",
        {Still(Whole(RENDER_WIDTH, "RENDER_WIDTH", 960, 1, 16384, "Width in pixels")),
         Still(Whole(RENDER_HEIGHT, "RENDER_HEIGHT", 540, 1, 16384, "Height in pixels")),
         Still(Whole(RENDER_SAMPLES, "RENDER_SAMPLES", 16, 1, 65536, "Samples per pixel")),
         Color(RENDER_BACKGROUND, "RENDER_BACKGROUND", {}, "Color behind everything"),
         Link(RENDER_CAMERA, "RENDER_CAMERA", LinkTarget::Object,
              "Camera of the picture; none: the first camera of the scene"),
         Still(Real(RENDER_SHUTTER, "RENDER_SHUTTER", 0, 0, 1, "frames",
                    "How long the shutter is open from the start of the frame, for motion blur")),
         Still(Whole(RENDER_BOUNCES, "RENDER_BOUNCES", 0, 0, 16,
                     "Number of diffuse bounces of light; from 1 on flames light nearby surfaces")),
         Still(Real(RENDER_FRAME_RATE, "RENDER_FRAME_RATE", 0, 0, 10000, "frames per second",
                    "Frame rate of the pictures; 0: that of the document"))});
    return one;
  }();
  return render;
}

}  // namespace host
