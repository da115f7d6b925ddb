// The lights of the host's renderer, as volumes see them.
#pragma once

#include "host/interface/video_post.h"
#include "render/lighting.h"

namespace nbx {

class C4DLighting final : public Lighting {
 public:
  /// For the ray of one thread.
  explicit C4DLighting(host::VolumeData& data) : data_(&data) {}
  /// For LightField::prepare, in which each thread of the team uses its own context of the render.
  explicit C4DLighting(host::BaseRender& render) : render_(&render) {}

  int lightCount() override;
  Vec3d lightPosition(int index) override;
  bool illuminate(int index, const RenderVolume& volume, const Vec3d& point, Color& color,
                  Vec3d& direction, int thread) override;

 private:
  host::VolumeData& context(int thread);

  host::VolumeData* data_ = nullptr;
  host::BaseRender* render_ = nullptr;
};

}  // namespace nbx
