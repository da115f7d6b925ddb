// How often the sources of a substep are sampled.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// The number that the volume object gives or else one sample for each voxel that the fastest point
/// of any tag's meshes moves, seen from the domain, between two times in seconds of the document;
/// at least 1. May leave the document at either time.
int source_substeps(host::BaseObject& volume, const std::vector<host::BaseTag*>& tags,
                    double voxel_size, double start, double end);

}  // namespace nbx
