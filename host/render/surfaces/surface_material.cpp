#include "host/render/surfaces/surface_material.h"

#include "host/render/color.h"

namespace host {
namespace {

std::shared_ptr<const Texture> TextureOf(const BaseContainer& data, std::int32_t id) {
  const auto* shader = static_cast<const BaseShader*>(data.GetLink(id));
  return shader ? shader->GetTexture() : nullptr;
}

}  // namespace

Vector SurfaceMaterial::Channel::At(const Vector& uvw, double time) const {
  return texture ? Times(color, texture->Sample(uvw, time)) : color;
}

Vector SurfaceMaterial::Passing(Vector uvw, double time) const {
  if (!IsTransparent()) return {};
  if (!Place(uvw)) return {};
  const double covered = std::clamp(Mean(mask.At(uvw, time)), 0.0, 1.0);
  return Mix({1, 1, 1}, transparency.At(uvw, time), covered);
}

SurfaceMaterial ReadMaterial(const BaseTag& texture_tag) {
  SurfaceMaterial result;
  const BaseContainer& tag = texture_tag.GetDataInstance();
  const BaseList2D* material = tag.GetLink(TEXTURETAG_MATERIAL);
  if (!material) return result;
  const BaseContainer& data = material->GetDataInstance();
  result.color = {data.GetVector(MATERIAL_COLOR, {0.8, 0.8, 0.8}),
                  TextureOf(data, MATERIAL_COLOR_TEXTURE)};
  result.emission = {data.GetVector(MATERIAL_EMISSION), TextureOf(data, MATERIAL_EMISSION_TEXTURE)};
  result.transparency = {data.GetVector(MATERIAL_TRANSPARENCY),
                         TextureOf(data, MATERIAL_TRANSPARENCY_TEXTURE)};
  result.mask.texture = TextureOf(data, MATERIAL_MASK_TEXTURE);
  result.reflection = data.GetVector(MATERIAL_REFLECTION);
  result.roughness = data.GetReal(MATERIAL_ROUGHNESS);
  result.refraction = std::max(data.GetReal(MATERIAL_REFRACTION, 1), 0.01);

  result.placement = TexturePlacement(tag);
  return result;
}

std::vector<BaseTag*> TextureTags(const BaseObject& object) {
  std::vector<BaseTag*> tags;
  for (const BaseObject* o = &object; o && tags.empty(); o = o->GetUp())
    for (BaseTag* tag = o->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == kTextureTag) tags.push_back(tag);
  return tags;
}

}  // namespace host
