// The triangles in which scene geometry reaches the grids.
#pragma once

#include <array>

#include "math/vector.h"

namespace nbx {

class SurfaceTexture;

/// One triangle in domain cells: the center of cell (i, j, k) lies at (i, j, k). Everything but the
/// corners has a neutral default.
struct VoxelizationTriangle {
  Vec3f p0, p1, p2;
  Vec3f normal{};  // filled by who scans the triangle; a particle puts its velocity here
  Vec3f uvw0{}, uvw1{}, uvw2{};  // texture coordinates of the corners
  std::array<float, 3> corner_weights{1, 1, 1};
  std::array<int, 3> ids{-1, -1, -1};  // running index of each corner's vertex; -1: it has none
  const SurfaceTexture* surface_texture = nullptr;
};

}  // namespace nbx
