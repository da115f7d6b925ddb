// The triangles in which scene geometry reaches the grids.
#pragma once

#include "math/vector.h"

namespace nbx {

/// One triangle in domain cells: the centre of cell (i, j, k) lies at (i, j, k).
struct VoxelizationTriangle {
  Vec3f p0, p1, p2;
};

}  // namespace nbx
