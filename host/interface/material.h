// Materials: what surfaces are made of, and how they lie on an object.
#pragma once

#include <cmath>

#include "host/interface/texture.h"

namespace host {

/// The one type of material.
inline constexpr std::int32_t kMaterial = 5703;

/// Parameters of a material. A color's texture, where there is one, multiplies it.
enum MaterialParameter : std::int32_t {
  MATERIAL_COLOR = 2100,             ///< vector: share of the light that is scattered back
  MATERIAL_COLOR_TEXTURE = 2101,     ///< link to a shader
  MATERIAL_EMISSION = 2200,          ///< vector: light that the surface sends out
  MATERIAL_EMISSION_TEXTURE = 2201,  ///< link to a shader
  MATERIAL_TRANSPARENCY = 2300,      ///< vector: share of the light that passes straight through
  MATERIAL_TRANSPARENCY_TEXTURE = 2301,  ///< link to a shader
  MATERIAL_REFRACTION = 2302,            ///< real: index of refraction, 1 bends nothing
  MATERIAL_REFLECTION = 2500,            ///< vector: share that is mirrored, facing the surface
  MATERIAL_ROUGHNESS = 2501,  ///< real: 0 a mirror, 1 as wide as diffuse; the square of it is the
                              ///< width of the microfacet distribution
  MATERIAL_MASK_TEXTURE = 2800,  ///< link to a shader: where it is black there is no surface
};

/// Channels by number, as SampleChannel takes them.
enum MaterialChannel : std::int32_t {
  kChannelColor = 0,
  kChannelEmission = 1,
  kChannelTransparency = 2,
  kChannelMask = 7,
};

/// An entry of the document's "materials".
class BaseMaterial : public BaseList2D {
 public:
  virtual BaseMaterial* GetNext() const = 0;

  /// True if the channel adds something: its texture is set or its color isn't black. False for a
  /// number that is no channel.
  virtual bool HasChannel(std::int32_t channel) const = 0;
  /// The channel's color, texture included, at (u, v, 0) of the surface; white where there is no
  /// such channel. Threads as Texture::Sample.
  virtual Vector SampleChannel(std::int32_t channel, const Vector& uvw, double time) const = 0;
};

/// Parameters of a texture tag (type kTextureTag), which puts a material on its object and, where
/// they have no such tag of their own, on what lies under it. Of several the last one counts.
///
/// TexturePlacement says which coordinate of the material a coordinate of the mesh is.
enum TextureTagParameter : std::int32_t {
  TEXTURETAG_OFFSET_U = 1000,
  TEXTURETAG_OFFSET_V = 1001,
  TEXTURETAG_LENGTH_U = 1002,  ///< 0 counts as 1
  TEXTURETAG_LENGTH_V = 1003,  ///< 0 counts as 1
  TEXTURETAG_TILE = 1007,
  TEXTURETAG_MIRROR = 1008,
  TEXTURETAG_MATERIAL = 1010,   ///< link to a material
  TEXTURETAG_SELECTION = 1011,  ///< text: name of a selection tag of the object; empty: all of it
};

/// How a texture tag lays its material over an object: a texture coordinate u of the mesh becomes
/// (u - offset_u) / length_u, and v likewise. With `mirror` every second repetition runs backwards.
/// Without `tile` there is no material beyond 0 and 1.
struct TexturePlacement {
  double offset_u = 0, offset_v = 0, length_u = 1, length_v = 1;
  bool tile = true, mirror = false;

  TexturePlacement() = default;
  explicit TexturePlacement(const BaseContainer& tag)
      : offset_u(tag.GetReal(TEXTURETAG_OFFSET_U)),
        offset_v(tag.GetReal(TEXTURETAG_OFFSET_V)),
        length_u(tag.GetReal(TEXTURETAG_LENGTH_U, 1)),
        length_v(tag.GetReal(TEXTURETAG_LENGTH_V, 1)),
        tile(tag.GetBool(TEXTURETAG_TILE, true)),
        mirror(tag.GetBool(TEXTURETAG_MIRROR)) {
    if (length_u == 0) length_u = 1;
    if (length_v == 0) length_v = 1;
  }

  /// Turns coordinates of the mesh into those of the material; false where there is no material.
  bool Place(Vector& uvw) const {
    uvw.x = (uvw.x - offset_u) / length_u;
    uvw.y = (uvw.y - offset_v) / length_v;
    if (!std::isfinite(uvw.x) || !std::isfinite(uvw.y)) return false;
    if (!tile) return uvw.x >= 0 && uvw.x <= 1 && uvw.y >= 0 && uvw.y <= 1;
    if (mirror) uvw = {Mirrored(uvw.x), Mirrored(uvw.y), 0};
    return true;
  }

 private:
  static double Mirrored(double x) {
    const double period = x - 2 * std::floor(x / 2);
    return period > 1 ? 2 - period : period;
  }
};

}  // namespace host
