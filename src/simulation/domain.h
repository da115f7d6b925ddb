// The grid of a run: its cells, its walls, its place in the world, the air around it.
//
// Units: distances in the solver are simulation units = scene units * unit_scale, speeds are
// simulation units per second. Cells have domain coordinates: cell (0, 0, 0) is the low corner of
// the domain, and cell centers lie at integers.
//
// Fields hold the active box with one ghost layer: local index i is domain cell i + origin().
#pragma once

#include <array>

#include "math/affine_transform.h"
#include "math/int_box.h"

namespace nbx {

/// A wind in grid space: a unit vector, and simulation units per second.
struct Wind {
  Vec3d direction{1, 0, 0};
  double speed = 0;
  bool operator==(const Wind&) const = default;
  Vec3d velocity() const { return direction * speed; }
};

/// What the scene says about the domain. It may be animated.
struct DomainSetup {
  IntBox domain_box;                              // all cells, from (0, 0, 0)
  double dx = 0.01;                               // edge of a voxel in simulation units
  std::array<int, 6> face_closed{};               // x-, x+, y-, y+, z-, z+: 1 = wall, 0 = open
  Affine3d world_to_grid = Affine3d::identity();  // host world coordinates to domain cells
  Wind wind;                                      // velocity of the air outside of the active box
};

/// Written by Simulation3D alone: the setup comes from the scene before each substep, the active
/// box follows the gas.
struct Domain : DomainSetup {
  IntBox active_box;  // the simulated cells

  /// The domain cell of index (0, 0, 0), which is a ghost cell.
  Vec3i origin() const { return active_box.lo - Vec3i(1, 1, 1); }
  /// Dimensions of a field at cell centers.
  Vec3i center_dims() const { return active_box.size() + Vec3i(2, 2, 2); }
  /// Dimensions of a field on the faces across `axis`.
  Vec3i face_dims(int axis) const;
  /// A box of local indices, in domain cells.
  IntBox in_domain(const IntBox& local) const { return {local.lo + origin(), local.hi + origin()}; }

  /// The faces that are walls now. A closed face is a wall only while the active box touches it;
  /// elsewhere the box is open.
  std::array<int, 6> closed_faces() const;
};

}  // namespace nbx
