// The surfaces of solids: writes into a vector distance transform how far the cells round each
// triangle lie from it, on which side, and which vertex is nearest.
#pragma once

#include "scene/vcvdt.h"
#include "scene/walk/polygon_walk.h"

namespace nbx {

/// Reach of the surface in cells: the diagonal of a cell.
inline constexpr double kSolidReach = 1.7320508075688772;

/// Merges one triangle, in cells of the grid, into `grid`: each cell within reach keeps the nearest
/// surface's squared distance, the unit vector from the cell's side through the surface as its
/// offset, and in its label the id of that triangle's nearest corner; votes and the fixed bit stay.
/// Of surfaces at one distance the smallest id stays, then the smallest offset, so any number of
/// threads may work on one grid at once and the order leaves no trace.
void voxelize(VCVDT<float>& grid, const VoxelizationTriangle& triangle);

/// All triangles in parallel. The walk's cells are those of the grid, its low corner at 0.
void voxelize(VCVDT<float>& grid, const PolygonWalk& walk);

}  // namespace nbx
