// Textures that scale a source. Voxelizers read them at every cell that they hit, from many threads
// at once.
#pragma once

#include "math/vector.h"

namespace nbx {

/// A picture on the surface of a mesh.
class SurfaceTexture {
 public:
  virtual ~SurfaceTexture() = default;
  /// The factor at a texture coordinate.
  virtual float value(const Vec3f& uvw) const = 0;
};

/// A texture that fills space.
class VolumeTexture {
 public:
  virtual ~VolumeTexture() = default;
  /// The factor at the center of a domain cell.
  virtual float value(const Vec3i& cell) const = 0;
};

}  // namespace nbx
