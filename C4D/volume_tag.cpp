#include "C4D/volume_tag.h"

namespace nbx {

namespace {

class VolumeTag final : public host::TagData {
 public:
  bool Message(host::BaseList2D& node, std::int32_t type, void*) override {
    if (type != host::kMessageDocumentLoaded) return false;
    convert(node);
    return true;
  }

 private:
  /// Brings the parameters of an older version up to date, once. Up to version 1 amounts were per
  /// second, since then they are per frame; versions 2 to 5 differ in parameters that were new, and
  /// those have their defaults.
  static void convert(host::BaseList2D& tag) {
    host::BaseContainer& p = tag.GetDataInstance();
    const std::int32_t version = p.GetLong(TVOLUME_VERSION, kTagParametersVersion);
    if (version >= kTagParametersVersion) return;
    p.SetLong(TVOLUME_VERSION, kTagParametersVersion);
    if (version > 1) return;
    const double frame = 1.0 / tag.GetDocument().GetFps().Value();
    for (const std::int32_t amount : {TVOLUME_DENSITY, TVOLUME_TEMPERATURE, TVOLUME_FUEL}) {
      p.SetReal(amount, p.GetReal(amount) * frame);
      tag.ScaleKeys(amount, frame);
    }
  }
};

}  // namespace

bool register_volume_tag(host::HostServices& services) {
  return services.RegisterTagPlugin(
      kVolumeTag, "Tvolume",
      []() -> std::unique_ptr<host::TagData> { return std::make_unique<VolumeTag>(); },
      volume_tag_description());
}

}  // namespace nbx
