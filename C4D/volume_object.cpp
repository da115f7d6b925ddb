#include "C4D/volume_object.h"

#include "C4D/volume_parameters.h"

namespace nbx {

void VolumeObject::GetDimension(const host::BaseObject& object, host::Vector& centre,
                                host::Vector& radius) const {
  centre = {};
  radius = object.GetDataInstance().GetVector(OVOLUME_SIZE, {200, 200, 200}) * 0.5;
}

bool register_volume_object(host::HostServices& services) {
  return services.RegisterObjectPlugin(
      kVolumeObject, "Ovolume",
      []() -> std::unique_ptr<host::ObjectData> { return std::make_unique<VolumeObject>(); },
      volume_description());
}

}  // namespace nbx
