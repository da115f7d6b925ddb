// What a surface is made of at a point: materials and their placement, read once per frame.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/interface/material.h"

namespace host {

/// A material as it lies on an object. It holds its textures as they were when it was read.
struct SurfaceMaterial {
  struct Channel {
    Vector color;
    std::shared_ptr<const Texture> texture = {};  ///< multiplies the color
    Vector At(const Vector& uvw, double time) const;
  };
  Channel color{{0.8, 0.8, 0.8}}, emission, transparency, mask{{1, 1, 1}};
  Vector reflection;      ///< share that is mirrored, facing the surface
  double roughness = 0;   ///< its square is the width of the microfacet distribution
  double refraction = 1;  ///< index

  TexturePlacement placement;
  /// The material's coordinates for those of the mesh; false where the material doesn't reach.
  bool Place(Vector& uvw) const { return placement.Place(uvw); }
  /// Lets any light through in some place, bent or not.
  bool IsTransparent() const { return transparency.color != Vector{} || mask.texture; }
  /// The share of light that goes straight on at a point, for rays to lights.
  Vector Passing(Vector uvw, double time) const;
};

/// The material that a texture tag puts on its object.
SurfaceMaterial ReadMaterial(const BaseTag& texture_tag);

/// The texture tags that count for an object: its own, else those of the nearest parent that has
/// some; in the order of the document.
std::vector<BaseTag*> TextureTags(const BaseObject& object);

}  // namespace host
