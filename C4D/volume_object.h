// The volume object: the container of one simulation. Its place and size are those of the domain.
#pragma once

#include "cache/bfs.h"
#include "host/interface/plugin.h"

namespace nbx {

/// Keeps the store of its cache open from the first use until the object goes or names another
/// cache.
class VolumeObject final : public host::ObjectData {
 public:
  bool Message(host::BaseList2D& node, std::int32_t type, void* data) override;
  bool GetDParameter(host::BaseList2D& node, std::int32_t id, host::ParameterValue& value) override;
  bool GetDEnabling(const host::BaseList2D& node, std::int32_t id) const override;
  void GetDimension(const host::BaseObject& object, host::Vector& center,
                    host::Vector& radius) const override;
  void ModifyParticles(const host::BaseObject& object, const host::Particles& particles,
                       std::vector<host::ParticleModification>& changes, double step) override;

 private:
  bool handle(host::BaseObject& object, std::int32_t type, void* data);
  /// The store of the object's cache; without one, the last store, which may be null.
  std::shared_ptr<BFS> get_cache(const host::BaseObject& object);
  /// Logs an id that is no button's.
  void handleButton(host::BaseObject& object, std::int32_t id);

  std::shared_ptr<BFS> cache_;
};

bool register_volume_object(host::HostServices& services, const std::string& name);

}  // namespace nbx
