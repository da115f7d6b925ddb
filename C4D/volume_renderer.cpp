#include "C4D/volume_renderer.h"

#include <cmath>
#include <memory>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/post_effect_parameters.h"
#include "C4D/rendering/c4d_lighting.h"
#include "C4D/rendering/render_volumes.h"
#include "C4D/rendering/simulate_on_render.h"
#include "C4D/services/guard.h"
#include "C4D/services/host_conversion.h"
#include "math/field_pool.h"
#include "render/volume_renderer.h"

namespace nbx {

namespace {

float srgb(float x) {
  return x <= 0.0031308f ? 12.92f * x : 1.055f * std::pow(x, 1 / 2.4f) - 0.055f;
}

// The classes of a ray; `plain` if it is in none of the others.
std::uint32_t ray_classes(const host::VolumeRay& ray, std::uint32_t plain) {
  std::uint32_t classes = 0;
  const struct {
    std::uint32_t types, bit;
  } kinds[] = {
      {host::kRayTransparency | host::kRayRoughTransparency, kTransparencyRay},
      {host::kRayReflection | host::kRayRoughReflection, kReflectionRay},
      {host::kRayRefraction | host::kRayRoughRefraction, kRefractionRay},
      {host::kRayIndirect, kIndirectRay},
      {host::kRayOcclusion, kOcclusionRay},
  };
  for (const auto& [types, bit] : kinds)
    if (ray.type & types) classes |= bit;
  if (!classes && !(ray.type & host::kRayNotCamera)) classes = plain;
  return ray.light_query ? classes | kLightQueryRay : classes;
}

class VPvolume final : public host::VideoPostData {
 public:
  host::RenderResult Execute(host::BaseVideoPost& node, host::RenderPhase phase, bool open,
                             host::BaseRender& render) override {
    const auto fail = [&](const std::string& why) {
      render.Warning(node.GetName() + ": " + why);
      return out_of_memory() ? host::RenderResult::OutOfMemory : host::RenderResult::Failed;
    };
    return guarded("VPvolume::Execute", fail, [&] { return execute(node, phase, open, render); });
  }

  bool GetDEnabling(const host::BaseList2D& node, std::int32_t id) const override {
    return guarded("VPvolume::GetDEnabling", true, [&] { return VPVOLUME.enabled(id, node); });
  }

  // A ray that fails ends the render: a picture without the ray's smoke would be wrong.
  void CalcVolumetric(host::VolumeData& data) override {
    if (volumes_.renderer.active) logged("VPvolume::CalcVolumetric", [&] { trace_view(data); });
  }
  void CalcShadow(host::VolumeData& data) override {
    if (volumes_.renderer.active) logged("VPvolume::CalcShadow", [&] { trace_shadow(data); });
  }

 private:
  void trace_view(host::VolumeData& data) {
    C4DLighting lighting(data);
    RayRecord ray = record(data.ray, kCameraRay, lighting);
    if (!traceVolumes(volumes_.renderer, ray)) return;
    if (gamma_) encode(ray);
    data.encoded = gamma_;
    data.color = {ray.radiance[0], ray.radiance[1], ray.radiance[2]};
    data.transparency = {ray.transmittance[0], ray.transmittance[1], ray.transmittance[2]};
  }

  void trace_shadow(host::VolumeData& data) {
    C4DLighting lighting(data);
    RayRecord ray = record(data.ray, kShadowRay, lighting);
    if (!traceShadow(volumes_.renderer, ray)) return;
    data.transparency = {ray.transmittance[0], ray.transmittance[1], ray.transmittance[2]};
  }

  host::RenderResult execute(host::BaseVideoPost& node, host::RenderPhase phase, bool open,
                             host::BaseRender& render) {
    if (phase == host::RenderPhase::Sequence) {
      if (open) return open_sequence(render);
      close_sequence(render);
      return host::RenderResult::Ok;
    }
    if (!open) {
      release_frames(volumes_);
      return host::RenderResult::Ok;
    }
    gamma_ = ParameterReader(node)(VPVOLUME.GAMMA);
    return prepare_all(volumes_, render, node) ? host::RenderResult::Ok
                                               : host::RenderResult::UserBreak;
  }

  static RayRecord record(const host::VolumeRay& from, std::uint32_t plain, Lighting& lighting) {
    RayRecord ray;
    ray.thread = from.thread;
    ray.lighting = &lighting;
    ray.origin = to_vector(from.origin);
    ray.direction = to_vector(from.direction);
    ray.tMax = from.surface_distance;
    ray.mask = ray_classes(from, plain);
    ray.seed = from.seed;
    return ray;
  }

  static void encode(RayRecord& ray) {
    for (float& c : ray.radiance) c = srgb(c);
    if (ray.mask & kCameraRay) return;
    for (float& t : ray.transmittance) t = 1 - srgb(1 - t);
  }

  host::RenderResult open_sequence(host::BaseRender& render) {
    collect_volumes(volumes_, render.GetDocument().GetFirstObject());
    return admit_simulations(volumes_.hosted, render) ? host::RenderResult::Ok
                                                      : host::RenderResult::Failed;
  }

  void close_sequence(host::BaseRender& render) {
    end_simulations(volumes_.hosted, render);
    volumes_.hosted.clear();
    volumes_.renderer.volumes.clear();
    field_pool().release_unused();
  }

  RenderVolumes volumes_;
  bool gamma_ = true;
};

}  // namespace

bool register_volume_renderer(host::HostServices& services, const std::string& name) {
  return services.RegisterVideoPostPlugin(
      kPostEffect, name,
      []() -> std::unique_ptr<host::VideoPostData> { return std::make_unique<VPvolume>(); },
      post_effect_description());
}

}  // namespace nbx
