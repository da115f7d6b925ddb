// The volume object as a force on particles, which then follow the cached flow.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// As host::ObjectData::ModifyParticles. Does nothing while OVOLUME_PARTICLE_ADVECTION isn't above
/// 0, and where the cache has no frame with velocity for the document's time. A frame that can't be
/// read costs a log line.
void modify_particles(const host::BaseObject& volume, const host::Particles& particles,
                      std::vector<host::ParticleModification>& changes, double step);

}  // namespace nbx
