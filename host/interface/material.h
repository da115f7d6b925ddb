// Materials of surfaces, and their placement on objects.
#pragma once

#include <cmath>

#include "host/interface/texture.h"

namespace host {

/// The one type of material.
inline constexpr std::int32_t kMaterial = 5703;

/// Parameters of a material. A texture multiplies its color.
enum MaterialParameter : std::int32_t {
  MATERIAL_COLOR = 2100,                 ///< vector: fraction of light scattered diffusely
  MATERIAL_COLOR_TEXTURE = 2101,         ///< link to a shader
  MATERIAL_EMISSION = 2200,              ///< vector: emitted light
  MATERIAL_EMISSION_TEXTURE = 2201,      ///< link to a shader
  MATERIAL_TRANSPARENCY = 2300,          ///< vector: fraction of light that passes through
  MATERIAL_TRANSPARENCY_TEXTURE = 2301,  ///< link to a shader
  MATERIAL_REFRACTION = 2302,            ///< real: index of refraction, 1 for none
  MATERIAL_REFLECTION = 2500,            ///< vector: mirrored fraction at normal incidence
  MATERIAL_ROUGHNESS = 2501,     ///< real: 0 a mirror, 1 as wide as diffuse; its square is the
                                 ///< width of the microfacet distribution
  MATERIAL_MASK_TEXTURE = 2800,  ///< link to a shader: black means no surface
};

/// Channel numbers for SampleChannel.
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

  /// True if the channel has an effect: its texture is set or its color isn't black. False for an
  /// unknown channel.
  virtual bool HasChannel(std::int32_t channel) const = 0;
  /// The color of the channel including its texture, at (u, v, 0) of the surface. White for an
  /// unknown channel. May be called from the same threads as Texture::Sample.
  virtual Vector SampleChannel(std::int32_t channel, const Vector& uvw, double time) const = 0;
};

/// Parameters of a texture tag (type kTextureTag). It assigns a material to its object, and to
/// objects under it that have no such tag. If there are several, the last one counts.
///
/// TexturePlacement maps coordinates of the mesh to coordinates of the material.
enum TextureTagParameter : std::int32_t {
  TEXTURETAG_OFFSET_U = 1000,
  TEXTURETAG_OFFSET_V = 1001,
  TEXTURETAG_LENGTH_U = 1002,  ///< 0 means 1
  TEXTURETAG_LENGTH_V = 1003,  ///< 0 means 1
  TEXTURETAG_TILE = 1007,
  TEXTURETAG_MIRROR = 1008,
  TEXTURETAG_MATERIAL = 1010,  ///< link to a material
  TEXTURETAG_SELECTION =
      1011,  ///< text: name of a selection tag of the object; empty: all polygons
};

/// How a texture tag places its material on an object: a texture coordinate u of the mesh becomes
/// (u - offset_u) / length_u, and v likewise. With `mirror`, every second repetition is mirrored.
/// Without `tile`, there is no material outside of 0 to 1.
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

  /// Converts coordinates of the mesh to those of the material. False outside the material.
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
