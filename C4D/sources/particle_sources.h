// Particle systems of the host as sources.
#pragma once

#include "host/interface/scene.h"
#include "scene/particle_table.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// Column groups of a ParticleTable.
struct ParticleColumns {
  bool active = true, position = true, velocity = false, age = false, mass = false, size = false;
};

/// The particles of an emitter or a group at the document's time. An emitter's particles have no
/// mass and no size. Any other object gives an empty table.
ParticleTable make_table(const host::BaseObject& object, const ParticleColumns& columns);

/// Adds the particles of `object` and of what lies under it, without what is switched off: what
/// they emit to `weights`, and the share of their velocity that the parameters name to the
/// simulation's velocity sources.
void add_particle_sources(Simulation3D& sim, SparseField<float, 3>& weights,
                          host::BaseObject& object, const SimulationObjectParameters& parameters);

}  // namespace nbx
