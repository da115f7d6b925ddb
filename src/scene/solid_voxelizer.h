// The surfaces of solids: writes the distance of the cells around each triangle, their side and the
// nearest vertex into a vector distance transform.
#pragma once

#include "scene/vcvdt.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

/// Reach of the surface in cells: the diagonal of a cell.
inline constexpr double kSolidReach = 1.7320508075688772;

/// Merges one triangle, in cells of the grid, into `grid`. Each cell within reach keeps the squared
/// distance of the nearest surface; as its offset the unit vector from the side of the cell through
/// the surface; in its label the id of the nearest corner of that triangle. Votes and the fixed bit
/// stay. Among equal distances the smallest id wins, then the smallest offset, so any number of
/// threads may work on one grid at once with the same result.
void voxelize(VCVDT<float>& grid, const VoxelizationTriangle& triangle);

/// All triangles in parallel. The walk's cells are those of the grid, its low corner at 0.
void voxelize(VCVDT<float>& grid, const PolygonWalk& walk);

}  // namespace nbx
