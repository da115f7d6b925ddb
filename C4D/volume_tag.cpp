#include "C4D/volume_tag.h"

namespace nbx {

bool register_volume_tag(host::HostServices& services) {
  return services.RegisterTagPlugin(
      kVolumeTag, "Tvolume",
      []() -> std::unique_ptr<host::TagData> { return std::make_unique<host::TagData>(); },
      volume_tag_description());
}

}  // namespace nbx
