// The triangles that voxelizers work on.
#pragma once

#include <array>

#include "math/vector.h"

namespace nbx {

class SurfaceTexture;

/// A triangle in domain cells: the center of cell (i, j, k) lies at (i, j, k).
struct VoxelizationTriangle {
  Vec3f p0, p1, p2;
  Vec3f normal{};                // set by the scan; particles put their velocity here
  Vec3f uvw0{}, uvw1{}, uvw2{};  // texture coordinates of the corners
  std::array<float, 3> corner_weights{1, 1, 1};
  std::array<int, 3> ids{-1, -1, -1};  // running index of the vertex of each corner, or -1
  const SurfaceTexture* surface_texture = nullptr;
};

}  // namespace nbx
