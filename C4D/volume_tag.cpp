#include "C4D/volume_tag.h"

#include "C4D/parameters/enabling_rule.h"
#include "C4D/parameters/volume_tag_parameters.h"

namespace nbx {

namespace {

class VolumeTag final : public host::TagData {
 public:
  bool Message(host::BaseList2D& node, std::int32_t type, void*) override {
    if (type != host::kMessageDocumentLoaded) return false;
    convert(node);
    return true;
  }

  /// A tag that is switched off keeps its parameters: they can be set before it is switched on.
  bool GetDEnabling(const host::BaseList2D& node, std::int32_t id) const override {
    static const std::vector<EnablingRule> rules{
        {TVOLUME_SOLID, EnablingRule::kIs, false, {TVOLUME_VELOCITY_TRANSFER, TVOLUME_FILL}},
        {TVOLUME_PARTICLE_MAP,
         EnablingRule::kIsNot,
         TVOLUME_PARTICLE_NOTHING,
         {TVOLUME_PARTICLE_CURVE}},
    };
    return enabled_by_rules(rules, node, id);
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

bool register_volume_tag(host::HostServices& services, const std::string& name) {
  return services.RegisterTagPlugin(
      kVolumeTag, name,
      []() -> std::unique_ptr<host::TagData> { return std::make_unique<VolumeTag>(); },
      volume_tag_description());
}

}  // namespace nbx
