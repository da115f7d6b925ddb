// How often the sources of a substep are sampled.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// The number that the volume object gives. Without one, a sample for each voxel that the fastest
/// point of the tagged meshes moves, relative to the domain, between two document times in seconds;
/// at least 1. May leave the document at either time.
int source_substeps(host::BaseObject& volume, const std::vector<host::BaseTag*>& tags,
                    double voxel_size, double start, double end);

}  // namespace nbx
