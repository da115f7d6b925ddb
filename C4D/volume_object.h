// The volume object: the container of one simulation, whose place and size are the domain's.
#pragma once

#include "C4D/modify_particles.h"
#include "host/interface/plugin.h"

namespace nbx {

class VolumeObject final : public host::ObjectData {
 public:
  void GetDimension(const host::BaseObject& object, host::Vector& centre,
                    host::Vector& radius) const override;
  bool Message(host::BaseList2D& node, std::int32_t type, void* data) override;
  void ModifyParticles(const host::BaseObject& object, const host::Particles& particles,
                       std::vector<host::ParticleModification>& changes, double step) override {
    modify_particles(object, particles, changes, step);
  }
};

bool register_volume_object(host::HostServices& services);

}  // namespace nbx
