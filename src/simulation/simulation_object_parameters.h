// One source object of the scene in one substep.
#pragma once

#include <map>
#include <set>

#include "math/affine_transform.h"
#include "math/rational_spline.h"

namespace nbx {

/// The property that scales the strength of a particle.
enum class ParticleMap { kNone = 0, kAge = 1, kSize = 2, kMass = 3, kSpeed = 4 };

struct SimulationObjectParameters {
  Affine3d transform = Affine3d::identity();  // of the object, third coordinate negated
  std::map<int, double> amounts;              // by ChannelKey; cells scale them by 0 .. 1
  std::set<int> add_keys;                     // keys whose amount is added; the others are set
  double normal_force = 0;                    // simulation units per second along the normal
  double thickness = 1.7320508075688772;      // reach of a source in cells
  double velocity_transfer = 0;  // factor for the velocity of particles, in simulation units
  bool fill = false;             // meshes emit from their inside too
  Vec3d direction;               // speed along the object's axes, simulation units
  Affine3d world_to_grid = Affine3d::identity();  // as in Domain
  double time = 0;                                // simulation time in seconds
  double time_scale = 1;
  ParticleMap particle_map = ParticleMap::kNone;
  RationalSpline particle_curve;  // ready for evaluation
};

/// Whether the object adds anything to the cells that it covers.
inline bool has_emission(const SimulationObjectParameters& parameters) {
  if (parameters.direction != Vec3d()) return true;
  for (const auto& [key, amount] : parameters.amounts)
    if (amount != 0) return true;
  return false;
}

}  // namespace nbx
