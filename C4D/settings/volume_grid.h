// Where the voxels of a volume object lie in the host's world.
#pragma once

#include <string>

#include "host/interface/scene.h"
#include "math/affine_transform.h"
#include "math/int_box.h"

namespace nbx {

/// The domain of a volume object at the document's time.
struct VolumeGrid {
  Vec3d cells;             // whole numbers, 2 at least; maybe more than any memory holds
  Affine3d world_to_grid;  // host world coordinates to domain cells, z negated

  /// `cells` within what a sparse field can address.
  Vec3i dims() const;
  IntBox box() const { return {{0, 0, 0}, dims() - Vec3i(1, 1, 1)}; }
};

VolumeGrid volume_grid(const host::BaseObject& volume, double voxel_size);

/// Why no simulation can have this domain, as half a sentence; empty if one can.
std::string what_is_wrong(const VolumeGrid& grid);

}  // namespace nbx
