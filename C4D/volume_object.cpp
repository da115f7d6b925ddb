#include "C4D/volume_object.h"

#include "C4D/save_assets.h"
#include "C4D/volume_parameters.h"

namespace nbx {

void VolumeObject::GetDimension(const host::BaseObject& object, host::Vector& centre,
                                host::Vector& radius) const {
  centre = {};
  radius = object.GetDataInstance().GetVector(OVOLUME_SIZE, {200, 200, 200}) * 0.5;
}

bool VolumeObject::Message(host::BaseList2D& node, std::int32_t type, void* data) {
  if (type != host::kMessageSaveAssets) return false;
  save_cache(static_cast<host::BaseObject&>(node), *static_cast<host::SaveAssets*>(data));
  return true;
}

bool register_volume_object(host::HostServices& services) {
  return services.RegisterObjectPlugin(
      kVolumeObject, "Ovolume",
      []() -> std::unique_ptr<host::ObjectData> { return std::make_unique<VolumeObject>(); },
      volume_description());
}

}  // namespace nbx
