// Finds the cells inside of meshes that may have holes: each line of cells along x, y and z counts
// how often it crosses the surface, and two of the three lines through a cell decide.
#pragma once

#include "math/sparse_field.h"
#include "scene/polygon_object_container.h"
#include "scene/vcvdt.h"

namespace nbx {

/// Writes 1 into the cells of the container's box that lie inside. The others keep what they hold,
/// and no block is made for them. The values are the same bits for any number of threads.
void classify_inside(SparseField<float, 3>& field, const PolygonObjectContainer& triangles);

/// Adds the votes of the three directions to the labels; the container's cells are the grid's.
void classify_inside(VCVDT<float>& grid, const PolygonObjectContainer& triangles);

}  // namespace nbx
