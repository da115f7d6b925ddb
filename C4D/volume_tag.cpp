#include "C4D/volume_tag.h"

#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/services/guard.h"

namespace nbx {

namespace {

class VolumeTag final : public host::TagData {
 public:
  bool Message(host::BaseList2D& node, std::int32_t type, void*) override {
    if (type != host::kMessageDocumentLoaded) return false;
    return guarded("VolumeTag::Message", false, [&] { return convert(node), true; });
  }

  /// The parameters of a tag that is off stay enabled, so that they can be set before it is turned
  /// on.
  bool GetDEnabling(const host::BaseList2D& node, std::int32_t id) const override {
    return guarded("VolumeTag::GetDEnabling", true, [&] { return TVOLUME.enabled(id, node); });
  }

 private:
  /// Converts the parameters of an older version, once. Up to version 1 amounts were per second,
  /// since then per frame. Versions 2 to 5 only lack parameters, which have their defaults.
  static void convert(host::BaseList2D& tag) {
    host::BaseContainer& p = tag.GetDataInstance();
    const std::int32_t version = p.GetLong(TVOLUME.VERSION, kTagParametersVersion);
    if (version >= kTagParametersVersion) return;
    p.SetLong(TVOLUME.VERSION, kTagParametersVersion);
    if (version > 1) return;
    const double frame = 1.0 / tag.GetDocument().GetFps().Value();
    for (const std::int32_t amount : {TVOLUME.DENSITY, TVOLUME.TEMPERATURE, TVOLUME.FUEL}) {
      p.SetReal(amount, p.GetReal(amount) * frame);
      tag.ScaleKeys(amount, frame);
    }
  }
};

}  // namespace

bool register_volume_tag(host::HostServices& services, const std::string& name) {
  return services.RegisterTagPlugin(
      kVolumeTag, name,
      []() -> std::unique_ptr<host::TagData> { return std::make_unique<VolumeTag>(); },
      volume_tag_description());
}

}  // namespace nbx
