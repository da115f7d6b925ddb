#include "C4D/volume/modify_particles.h"

#include <exception>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "cache/slot_handle.h"
#include "scene/particle_advection.h"
#include "util/log.h"
#include "util/units.h"

namespace nbx {

void modify_particles(const host::BaseObject& volume, const std::shared_ptr<BFS>& store,
                      const host::Particles& particles,
                      std::vector<host::ParticleModification>& changes, double step) try {
  const double strength = ParameterReader(volume)(OVOLUME.PARTICLE_ADVECTION);
  if (!(strength > 0) || !(step > 0) || !store) return;
  const int shown = frame_at_time(volume, volume.GetDocument().GetTime());
  const SlotHandle frame(store, shown, 0, true);
  if (!frame) return;
  const ParticleAdvection flow(*frame, kMetersPerUnit);
  if (flow.empty()) return;

  const auto count = static_cast<std::ptrdiff_t>(std::min(particles.size(), changes.size()));
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const host::Particle& particle = particles[i];
    Vec3d moved;
    if (!(particle.bits & host::kParticleAlive) ||
        !flow.trace(moved, to_vector(particle.position), step * strength))
      continue;
    host::ParticleModification& change = changes[i];
    change.velocity.x += moved[0] / step;
    change.velocity.y += moved[1] / step;
    change.velocity.z += moved[2] / step;
    ++change.count;
  }
} catch (const std::exception& e) {
  LogMessage() << "particles don't follow the gas: " << e.what();
}

}  // namespace nbx
