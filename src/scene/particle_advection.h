// Moves particles with the gas of a cached frame.
#pragma once

#include <array>

#include "cache/sim_frame.h"
#include "math/affine_transform.h"

namespace nbx {

/// The velocity of a frame, ready for tracing. It shares the grids of the frame. Any number of
/// threads may trace at once.
class ParticleAdvection {
 public:
  /// Uses the velocity grids of `frame`; empty if one is missing. Throws what reading them throws.
  ParticleAdvection(SimFrame& frame, double unit_scale);

  bool empty() const { return !fields_[0]; }

  /// How far a particle at `position` moves in `seconds` of the document: both in world coordinates
  /// of the host, z not negated. False if it isn't inside of the simulated box; `moved` is then
  /// left alone.
  bool trace(Vec3d& moved, const Vec3d& position, double seconds) const;

 private:
  Vec3d velocity(const Vec3d& x) const;

  std::array<FieldHandle, 3> fields_;
  Affine3d to_cells_, to_world_;  // between the host's world and cells of the grids
  Vec3i cells_;                   // of a center grid
  double cells_per_second_ = 0;   // of the document, at a velocity of 1
};

}  // namespace nbx
