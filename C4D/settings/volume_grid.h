// The voxel grid of a volume object in the host's world.
#pragma once

#include <string>

#include "host/interface/scene.h"
#include "math/affine_transform.h"
#include "math/int_box.h"
#include "simulation/solver_params.h"

namespace nbx {

/// The domain of a volume object at the document's time.
struct VolumeGrid {
  Vec3d cells;             // whole numbers, at least 2; may exceed any memory
  Affine3d world_to_grid;  // host world coordinates to domain cells, z negated

  /// `cells`, limited to what a sparse field can address.
  Vec3i dims() const;
  IntBox box() const { return {{0, 0, 0}, dims() - Vec3i(1, 1, 1)}; }
};

/// Each voxel of that size is divided into `factor` voxels along each axis.
VolumeGrid volume_grid(const host::BaseObject& volume, double voxel_size, int factor = 1);

/// The domain of a run. An up-resolution run divides the voxels of the coarse run, whose size is
/// the volume's.
VolumeGrid run_grid(const host::BaseObject& volume, const SolverParams& params);

/// Why the domain can't be simulated, as half a sentence; empty if it can.
std::string what_is_wrong(const VolumeGrid& grid);

}  // namespace nbx
