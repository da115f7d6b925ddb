// From voxelized solids to their signed distances.
#pragma once

#include "scene/vcvdt.h"

namespace nbx {

/// Turns the voxelized and voted state into the solids of a step. `phi` is the squared distance to
/// the nearest surface in squared cells, negative inside: exact at the surface, by sweeps inside,
/// VCVDT::kFar with the sign of its side where nothing is near. `ids` names the vertex whose
/// surface is nearest, -1 for none. Both get the transform's dimensions; `vdt` is used up.
void post_process_voxelized(Field<float>& phi, std::vector<std::int32_t>& ids, VCVDT<float>& vdt);

/// Keeps the surface alone: the cells with one of their 26 neighbors on the other side, marked as
/// kFixed. All other cells lose their distance, those of the outer layer their id too. Labels must
/// hold 0 or 1 for their votes.
void clearNonInterfacial(VCVDT<float>& vdt);

/// Spreads distances and ids into cells inside that aren't kFixed, by two sweeps over the grid: a
/// cell takes the way of a neighbor plus the step to it where that is shorter (Danielsson,
/// Euclidean Distance Mapping, 1980). On the calling thread: each cell depends on those before it.
void sweep_inside(VCVDT<float>& vdt);

}  // namespace nbx
