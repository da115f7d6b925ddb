// Materials and their placement, read once per frame.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/interface/material.h"

namespace host {

/// A material placed on an object. It keeps the textures that existed when it was read.
struct SurfaceMaterial {
  struct Channel {
    Vector color;
    std::shared_ptr<const Texture> texture = {};  ///< multiplies the color
    Vector At(const Vector& uvw, double time) const;
  };
  Channel color{{0.8, 0.8, 0.8}}, emission, transparency, mask{{1, 1, 1}};
  Vector reflection;      ///< mirrored fraction at normal incidence
  double roughness = 0;   ///< the width of the microfacet distribution is its square
  double refraction = 1;  ///< index

  TexturePlacement placement;
  /// Converts texture coordinates of the mesh to those of the material. False outside the material.
  bool Place(Vector& uvw) const { return placement.Place(uvw); }
  /// True if any light can pass, straight or refracted.
  bool IsTransparent() const { return transparency.color != Vector{} || mask.texture; }
  /// The fraction of light that passes straight through at a point, for shadow rays.
  Vector Passing(Vector uvw, double time) const;
};

/// The material of a texture tag.
SurfaceMaterial ReadMaterial(const BaseTag& texture_tag);

/// The texture tags that apply to an object, in document order: its own, otherwise those of the
/// nearest parent that has some.
std::vector<BaseTag*> TextureTags(const BaseObject& object);

}  // namespace host
