// How many blocks of a sparse field a voxelizer will touch: the map must have room before threads
// insert into it.
#pragma once

#include "math/int_box.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

/// At least as many blocks as the cells of `box` that lie within `reach` of the walk's triangles,
/// and their upper faces, fall into.
std::size_t block_bound(const PolygonWalk& walk, double reach, const IntBox& box);

}  // namespace nbx
