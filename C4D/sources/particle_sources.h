// Particle systems of the host as sources.
#pragma once

#include <vector>

#include "host/interface/scene.h"
#include "scene/particle_table.h"
#include "scene/velocity_voxelizer.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

/// Column groups of a ParticleTable.
struct ParticleColumns {
  bool active = true, position = true, velocity = false, age = false, mass = false, size = false;
};

/// The particles of an emitter or a group at the document's time. Particles of an emitter have no
/// mass and no size. Any other object gives an empty table.
ParticleTable make_table(const host::BaseObject& object, const ParticleColumns& columns);

/// `object` and the objects below it that are sources by their particles; those that are switched
/// off are left out, with all below them.
std::vector<host::BaseObject*> gather_particle_objects(host::BaseObject& object);

/// Adds the particles of `object` and of all objects below it that are switched on: what they emit
/// to `weights`, and `velocity_transfer` of their velocity to `velocity`, both in the cells of
/// `box`.
void add_particle_sources(SparseField<float, 3>& weights, const FaceFields& velocity,
                          host::BaseObject& object, const SimulationObjectParameters& parameters,
                          const IntBox& box);

}  // namespace nbx
