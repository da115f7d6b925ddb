#include "host/render/trace/volume_query.h"

#include <bit>

#include "host/render/color.h"
#include "host/render/sampler.h"

namespace host {
namespace {

/// Number of samples of an area light in a query from a point in space.
constexpr std::uint32_t kLightSamples = 4;

std::uint64_t SeedOf(const Vector& point) {
  const auto bits = [](double x) { return std::bit_cast<std::uint64_t>(x); };
  return HashOf(HashOf(bits(point.x), bits(point.y)), bits(point.z));
}

}  // namespace

void VolumeQuery::Ask(void (VideoPostData::*calc)(VolumeData&), bool camera_ray) {
  Vector all_color, all_transparency{1, 1, 1};
  if (!IsTraceable(ray.origin, ray.direction)) {
    color = all_color;
    transparency = all_transparency;
    return;
  }
  for (VideoPostData* effect : scene_.effects) {
    color = {};
    transparency = {1, 1, 1};
    encoded = false;
    (effect->*calc)(*this);
    if (encoded) {
      color = FromSrgb(color);
      if (!camera_ray) transparency = Vector{1, 1, 1} - FromSrgb(Vector{1, 1, 1} - transparency);
    }
    if (!IsFinite(color) || !IsFinite(transparency)) {
      ++counts_.broken;
      continue;
    }
    all_color = all_color + Times(all_transparency, color);
    all_transparency = Times(all_transparency, transparency);
  }
  color = all_color;
  transparency = all_transparency;
}

void VolumeQuery::AskVolumetric() { Ask(&VideoPostData::CalcVolumetric, ray.type == kRayCamera); }

Vector VolumeQuery::LightFrom(const LightSource& light, const LightSample& sample,
                              const Vector& point, double shutter, std::uint64_t seed) {
  if (!light.IsShadowed() || IsBlack(sample.color)) return sample.color;
  ++counts_.shadow_rays;
  const Vector passing =
      scene_.surfaces.Passing({point, sample.direction, sample.distance, kRayCamera, shutter});
  if (IsBlack(passing)) return {};
  VolumeQuery shadow(scene_, ray.thread, counts_);
  shadow.ray = ray;
  shadow.ray.origin = point;
  shadow.ray.direction = sample.direction;
  shadow.ray.surface_distance = sample.distance;
  shadow.ray.type = kRayCamera;
  shadow.ray.seed = seed;
  shadow.Ask(&VideoPostData::CalcShadow, false);
  return Times(sample.color, Times(passing, shadow.transparency));
}

bool VolumeQuery::Illuminate(std::int32_t light, const Vector& point, Vector& light_color,
                             Vector& direction) {
  const LightSource& source = scene_.lights[light];
  const std::uint64_t seed = HashOf(SeedOf(point), light);
  const std::uint32_t places = source.HasSize() ? kLightSamples : 1;
  light_color = direction = {};
  VolumeQuery asker(scene_, ray.thread, counts_);  // not part of a pixel
  asker.ray.light_query = true;
  for (std::uint32_t place = 0; place < places; ++place) {
    Sampler sampler(seed, place);
    const auto [u, v] = sampler.Next2D();
    const std::optional<LightSample> sample = source.Sample(point, u, v);
    if (!sample) continue;
    const Vector arriving = asker.LightFrom(source, *sample, point, 0, sampler.NextSeed());
    light_color = light_color + arriving * (1.0 / places);
    direction = direction + sample->direction * Mean(sample->color);
  }
  direction = Normalized(direction);
  return direction != Vector{};
}

GlowGrid FindGlow(const RenderScene& scene, const Vector& low, const Vector& high) {
  RayCounts counts;
  std::uint64_t seed = 0;
  return {
      low, high, [&](const Vector& from, int axis, double length) {
        VolumeQuery query(scene, 0, counts);
        query.ray.origin = from;
        query.ray.direction = {axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0, axis == 2 ? 1.0 : 0.0};
        query.ray.surface_distance = length;
        query.ray.type = kRayIndirect;
        query.ray.seed = HashOf(scene.seed, ++seed);
        query.AskVolumetric();
        return GlowGrid::Segment{query.color, Mean(query.transparency)};
      }};
}

}  // namespace host
