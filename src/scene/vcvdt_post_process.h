// From voxelized solids to their signed distances.
#pragma once

#include "scene/vcvdt.h"

namespace nbx {

/// Turns the voxelized and voted state into the solids of a step. `phi` is the squared distance to
/// the nearest surface in squared cells, negative inside: exact near the surface, by sweeps farther
/// inside, VCVDT::kFar with the sign of its side elsewhere. `ids` holds the vertex whose surface is
/// nearest, -1 for none. Both get the dimensions of the transform. Changes `vdt`.
void post_process_voxelized(Field<float>& phi, std::vector<std::int32_t>& ids, VCVDT<float>& vdt);

/// Keeps only the surface: cells with one of their 26 neighbors on the other side, which become
/// kFixed. All other cells lose their distance, those of the outer layer also their id. The votes
/// of all labels must be 0 or 1.
void clearNonInterfacial(VCVDT<float>& vdt);

/// Spreads distances and ids into inside cells that aren't kFixed, by two sweeps over the grid: a
/// cell takes the offset of a neighbor plus the step to it if that is shorter (Danielsson,
/// Euclidean Distance Mapping, 1980). Serial: each cell depends on those before it.
void sweep_inside(VCVDT<float>& vdt);

}  // namespace nbx
