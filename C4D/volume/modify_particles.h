// The volume object as a force on particles, which then follow the cached flow.
#pragma once

#include <memory>
#include <vector>

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// As host::ObjectData::ModifyParticles, with the frames of `store`. Does nothing unless
/// OVOLUME.PARTICLE_ADVECTION is above 0 and the store has a frame with velocity for the document's
/// time. A frame that can't be read is logged.
void modify_particles(const host::BaseObject& volume, const std::shared_ptr<BFS>& store,
                      const host::Particles& particles,
                      std::vector<host::ParticleModification>& changes, double step);

}  // namespace nbx
