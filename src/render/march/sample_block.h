// A block of samples of a ray. The marcher shades one block at a time.
#pragma once

#include "render/shade/field3.h"

namespace nbx {

/// The largest number of samples in a block. A multiple of the number of lanes
/// (math/lanes/lanes.h).
inline constexpr int kBlock = 16;

/// Points in voxel coordinates of one volume. The first n count; kernels read others as well, up to
/// a whole row of lanes.
struct Points {
  int n = 0;
  alignas(64) float x[kBlock]{}, y[kBlock]{}, z[kBlock]{};
  alignas(64) float t[kBlock]{};  // distance along the ray, in world units
};

/// A color for each point.
struct Colors {
  alignas(64) float c[3][kBlock];
  Color at(int i) const { return {c[0][i], c[1][i], c[2][i]}; }
};

}  // namespace nbx
