// An upper bound for the blocks of a sparse field that a voxelizer will touch: the map must have
// room before threads insert into it.
#pragma once

#include "math/int_box.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

/// For the cells of `box` within `reach` of the triangles of the walk, and their upper faces.
std::size_t block_bound(const PolygonWalk& walk, double reach, const IntBox& box);

}  // namespace nbx
