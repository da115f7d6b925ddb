#include "host/interface/material.h"

#include "host/scene/element.h"

namespace host {
namespace {

/// The parameters of a channel; 0 if it has none.
struct ChannelParameters {
  std::int32_t color = 0, texture = 0;
};

ChannelParameters ParametersOf(std::int32_t channel) {
  switch (channel) {
    case kChannelColor:
      return {MATERIAL_COLOR, MATERIAL_COLOR_TEXTURE};
    case kChannelEmission:
      return {MATERIAL_EMISSION, MATERIAL_EMISSION_TEXTURE};
    case kChannelTransparency:
      return {MATERIAL_TRANSPARENCY, MATERIAL_TRANSPARENCY_TEXTURE};
    case kChannelMask:
      return {0, MATERIAL_MASK_TEXTURE};
    default:
      return {};
  }
}

}  // namespace

bool SceneMaterial::HasChannel(std::int32_t channel) const {
  const ChannelParameters p = ParametersOf(channel);
  const bool colored = p.color != 0 && !(state_.data.GetVector(p.color) == Vector{});
  return colored || (p.color == 0 && p.texture != 0 && state_.data.GetLink(p.texture));
}

Vector SceneMaterial::SampleChannel(std::int32_t channel, const Vector& uvw, double time) const {
  const ChannelParameters p = ParametersOf(channel);
  const Vector color = p.color == 0 ? Vector{1, 1, 1} : state_.data.GetVector(p.color);
  const BaseList2D* link = p.texture == 0 ? nullptr : state_.data.GetLink(p.texture);
  if (!link) return color;
  const Vector t = static_cast<const BaseShader*>(link)->GetTexture()->Sample(uvw, time);
  return {color.x * t.x, color.y * t.y, color.z * t.z};
}

}  // namespace host
