// A few samples of a ray, handled side by side: the unit in which the marcher asks for shading.
#pragma once

#include "render/shade/field3.h"

namespace nbx {

/// The most samples in a block. A whole number of rows of lanes (math/lanes.h).
inline constexpr int kBlock = 16;

/// Points in voxel coordinates of one volume. The first n count; kernels look at the others of a
/// row of lanes too.
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
