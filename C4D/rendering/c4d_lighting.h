// The lights of the host's renderer, as volumes ask for them.
#pragma once

#include "host/interface/video_post.h"
#include "render/lighting.h"

namespace nbx {

/// Serves HostVolumes.
class C4DLighting final : public Lighting {
 public:
  /// As the thread of a ray sees the lights.
  explicit C4DLighting(host::VolumeData& data) : data_(&data) {}
  /// For preparations: each thread of an OpenMP team has a context of its own.
  explicit C4DLighting(host::BaseRender& render) : render_(&render) {}

  int lightCount() override;
  int lightFlag(int index) override;
  Vec3d lightPosition(int index) override;
  Color lightColor(int index) override;
  bool illuminate(int index, const RenderVolume& volume, const Vec3d& point, Color& color,
                  Vec3d& direction) override;

  /// True while the calling thread asks for a volume's light: rays that it casts then are
  /// kLightQueryRay.
  static bool in_query();

 private:
  host::VolumeData& context();

  host::VolumeData* data_ = nullptr;
  host::BaseRender* render_ = nullptr;
};

}  // namespace nbx
