// The volume object: the container of one simulation, whose place and size are the domain's.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

class VolumeObject final : public host::ObjectData {
 public:
  void GetDimension(const host::BaseObject& object, host::Vector& centre,
                    host::Vector& radius) const override;
};

bool register_volume_object(host::HostServices& services);

}  // namespace nbx
