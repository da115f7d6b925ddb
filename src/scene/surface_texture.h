// A grey picture that scales a source on the surface of a mesh: what a material's channel looks
// like in texture space, sampled once by who reads the scene.
#pragma once

#include <array>
#include <vector>

#include "math/vector.h"

namespace nbx {

struct SurfaceTexture {
  int width = 0, height = 0;
  std::vector<float> texels;  // width * height, u fastest, the first row at v = 0

  // The picture's place in texture coordinates.
  std::array<double, 2> offset{0, 0}, size{1, 1};  // a size of 0 counts as 1
  bool mirrored = false;  // negative coordinates mirror the picture; otherwise it repeats

  /// The picture at a texture coordinate, bilinear between the centres of texels, over the edges of
  /// the picture too. 1 without texels.
  float value(const Vec3f& uvw) const;
};

}  // namespace nbx
