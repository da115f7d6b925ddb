// Queries of the post effects along rays, and answers to their own queries.
#pragma once

#include <atomic>

#include "host/render/trace/render_scene.h"

namespace host {

/// Statistics of one thread, or of all threads.
struct RayCounts {
  std::int64_t rays = 0;         ///< camera rays and their continuations from surfaces
  std::int64_t shadow_rays = 0;  ///< to lights
  std::int64_t broken = 0;       ///< results of post effects that weren't finite
};

/// The VolumeData of the small host. Cheap to construct, one per ray.
class VolumeQuery final : public VolumeData {
 public:
  VolumeQuery(const RenderScene& scene, std::int32_t thread, RayCounts& counts)
      : scene_(scene), counts_(counts) {
    ray.thread = thread;
  }

  /// Queries all effects along `ray`. Sets color and transparency, decoded to linear light.
  void AskVolumetric();

  /// Light from one sample of a light at a point, with shadows. `seed` starts the random numbers of
  /// the shadow ray.
  Vector LightFrom(const LightSource& light, const LightSample& sample, const Vector& point,
                   double shutter, std::uint64_t seed);

  std::int32_t GetLightCount() const override {
    return static_cast<std::int32_t>(scene_.lights.size());
  }
  const RayLight& GetLight(std::int32_t index) const override {
    return scene_.lights[index].Info();
  }
  bool Illuminate(std::int32_t light, const Vector& point, Vector& light_color,
                  Vector& direction) override;

 private:
  void Ask(void (VideoPostData::*calc)(VolumeData&), bool camera_ray);

  const RenderScene& scene_;
  RayCounts& counts_;
};

/// Finds where the effects glow in a box, for bounced light.
GlowGrid FindGlow(const RenderScene& scene, const Vector& low, const Vector& high);

}  // namespace host
