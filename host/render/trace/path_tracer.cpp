#include "host/render/trace/path_tracer.h"

#include "host/render/color.h"
#include "host/render/surfaces/glow_ray.h"

namespace host {
namespace {

constexpr int kMostSegments = 32;
constexpr int kSureSegments = 5;  ///< later segments are subject to Russian roulette
/// Clamps what diffuse surfaces gather by chance, per sample. Otherwise a rare ray that finds a
/// small bright thing, such as a flame in a mirror, leaves a firefly.
constexpr double kIndirectLimit = 4;
/// The chance to go on from a surface whose light from the glow is already known.
constexpr double kKept = 0.5;
/// The fraction of rays to the glow that are traced through the effects.
constexpr double kCorrected = 0.125;
/// The chance to look into a mirror in which the glow is as far away as the glow itself.
constexpr double kImageChance = 2;

/// Tent filter with twice the width of a pixel: smooths edges without seams.
double Tent(double u) { return u < 0.5 ? std::sqrt(2 * u) - 0.5 : 1.5 - std::sqrt(2 - 2 * u); }

}  // namespace

struct PathTracer::Path {
  std::int32_t x = 0, y = 0, sample = 0;
  double shutter = 0;
  Vector origin = {}, direction = {};
  std::uint32_t type = kRayCamera;
  Vector weight = {1, 1, 1};
  Vector color = {};
  int bounces_left = 0;
  /// The segment runs through glow whose light was gathered at its start.
  bool glow_is_known = false;
  /// So was the light that the glow sends over the mirror at the segment's end.
  bool image_is_known = false;
  /// True if the path has only passed straight through transparent surfaces so far.
  bool IsStraight() const { return (type & ~(kRayTransparency | kRayRoughTransparency)) == 0; }

  void Add(const Vector& light) {
    Vector share = Times(weight, light);
    if ((type & kRayIndirect) != 0 && Largest(share) > kIndirectLimit)
      share = share * (kIndirectLimit / Largest(share));
    color = color + share;
  }

  void Turn(const SurfaceHit& hit, const SurfaceShading::Bounce& bounce) {
    type |= bounce.type;
    weight = Times(weight, bounce.weight);
    direction = Normalized(bounce.direction);
    const double side = Dot(direction, hit.normal) >= 0 ? 1 : -1;
    origin = hit.point + hit.normal * (side * hit.offset);
  }
};

/// Russian roulette. False if the path ends here.
bool PathTracer::Survives(Path& path, Sampler& sampler) {
  const double survival = std::min(0.95, Largest(path.weight));
  if (sampler.Next1D() >= survival) return false;
  path.weight = path.weight * (1 / survival);
  return true;
}

PathSample PathTracer::Trace(std::int32_t x, std::int32_t y, std::uint32_t sample) {
  const std::uint64_t pixel = static_cast<std::uint64_t>(static_cast<std::uint32_t>(y)) << 32 |
                              static_cast<std::uint32_t>(x);
  Sampler sampler(HashOf(scene_.seed, pixel), sample);
  const auto [u, v] = sampler.Next2D();
  const double shutter = scene_.has_shutter ? sampler.Next1D() : 0;
  const RenderCamera::Ray ray = scene_.camera.At(x + Tent(u), y + Tent(v), shutter);
  Path path{x, y, static_cast<std::int32_t>(sample), shutter, ray.origin, ray.direction};
  path.bounces_left = scene_.bounces;

  PathSample result;
  for (int segment = 0; segment < kMostSegments; ++segment) {
    ++counts_.rays;
    const std::optional<SurfaceHit> hit = Meet(path);
    const VolumeQuery space = AskSpace(path, sampler, hit ? hit->distance : INFINITY);
    if (segment == 0) {
      result.volume = space.color;
      result.transmittance = space.transparency;
      if (hit) result.depth = Dot(hit->point - scene_.camera.Place().off, scene_.camera.Place().v3);
    }
    if (!path.glow_is_known) path.Add(space.color);
    path.weight = Times(path.weight, space.transparency);
    if (!hit) {
      if (path.IsStraight()) {
        result.backdrop = Times(path.weight, scene_.background);
        result.alpha = 1 - Mean(path.weight);
      } else {
        path.Add(scene_.background);
      }
      break;
    }
    if (!Continue(path, *hit, sampler)) break;
    if (segment >= kSureSegments && !Survives(path, sampler)) break;
  }
  result.color = path.color;
  return result;
}

VolumeQuery PathTracer::AskSpace(const Path& path, Sampler& sampler, double distance) {
  VolumeQuery space(scene_, thread_, counts_);
  space.ray = {path.origin, path.direction, distance,    path.type,         thread_,
               path.x,      path.y,         path.sample, sampler.NextSeed()};
  space.AskVolumetric();
  return space;
}

/// True if the ray meets a hole of the surface.
bool PathTracer::PassesHole(const SurfaceHit& hit, Sampler& sampler) const {
  const SurfaceMaterial& material = *hit.material;
  return material.mask.texture && sampler.Next1D() >= Mean(material.mask.At(hit.uvw, scene_.time));
}

/// Adds the light of the surface to the path and chooses the next direction. False if the path
/// ends.
bool PathTracer::Continue(Path& path, const SurfaceHit& hit, Sampler& sampler) {
  const bool image_was_known = std::exchange(path.image_is_known, false);
  if (PassesHole(hit, sampler)) {
    path.origin = hit.point - hit.normal * hit.offset;
    return true;
  }
  const SurfaceShading shading(hit, path.direction, scene_.time);
  path.Add(shading.Emission());
  path.Add(DirectLight(path, shading, hit, sampler));
  const bool indirect = path.bounces_left > 0;
  const bool gathers = indirect && !scene_.glow.IsEmpty() && shading.IsDull();
  if (gathers) path.color = path.color + Times(path.weight, GlowLight(path, shading, hit, sampler));
  const SurfaceShading::Bounce bounce = shading.Choose(sampler, indirect, gathers ? kKept : 1);
  if (bounce.type == 0 || IsBlack(bounce.weight)) return false;
  if (bounce.type == kRayIndirect) --path.bounces_left;
  path.Turn(hit, bounce);
  if ((bounce.type & (kRayTransparency | kRayRoughTransparency)) != 0) return true;
  path.image_is_known = gathers && (bounce.type & (kRayIndirect | kRayRoughReflection)) != 0;
  const bool is_image = image_was_known && bounce.type == kRayReflection && IsGlowMirror(hit);
  path.glow_is_known =
      (path.image_is_known || is_image) && scene_.glow.IsCrossed(path.origin, path.direction);
  return true;
}

bool PathTracer::IsGlowMirror(const SurfaceHit& hit) const {
  return std::any_of(scene_.glow_mirrors.begin(), scene_.glow_mirrors.end(),
                     [&](const GlowMirror& mirror) { return mirror.IsHit(hit); });
}

/// Light of the glow that comes to a surface straight or over one flat mirror.
Vector PathTracer::GlowLight(const Path& from, const SurfaceShading& shading, const SurfaceHit& hit,
                             Sampler& sampler) {
  Path path = from;
  path.origin = hit.point + hit.normal * hit.offset;
  Vector sum = GlowOf(path, shading, GlowView(scene_.glow, path.origin, hit.normal), sampler);
  const Vector center = scene_.glow.Center();
  const double radius = Length(scene_.glow.Corners()[7] - scene_.glow.Corners()[0]) / 2;
  for (const GlowMirror& mirror : scene_.glow_mirrors) {
    if (!mirror.Shows(scene_.glow, path.origin)) continue;
    // Little of the light comes over a mirror that is far away, so fewer samples look into it,
    // except where the highlight may show the image.
    const Vector image = mirror.Image(center) - path.origin;
    const double far = Length(image), near = Length(center - path.origin) / far;
    const bool shines = shading.HasGloss() &&
                        Length(Cross(image, shading.GlossDirection(0.5, 0.5))) < radius + 0.3 * far;
    const double chance = shines ? 1 : std::clamp(kImageChance * near * near, 0.125, 1.0);
    if (sampler.Next1D() >= chance) continue;
    const GlowView view(scene_.glow, path.origin, hit.normal, &mirror);
    sum = sum + GlowOf(path, shading, view, sampler) * (1 / chance);
  }
  return sum;
}

/// Light from one view of the glow, through holes and panes as well.
///
/// The grid is a control variate: its estimate of the light up to the first surface always counts,
/// and a random part of the rays is traced through the effects to correct it.
Vector PathTracer::GlowOf(const Path& from, const SurfaceShading& shading, const GlowView& view,
                          Sampler& sampler) {
  Path path = from;
  const GlowRay ray = ChooseGlowRay(shading, view, sampler);
  if (IsBlack(ray.weight)) return {};
  path.direction = ray.direction;
  path.weight = ray.weight;
  path.type |= ray.type;
  ++counts_.rays;
  std::optional<SurfaceHit> next = Meet(path);
  const bool corrects = sampler.Next1D() < kCorrected;
  Vector weight = ray.weight;
  double walked = 0;
  if (const GlowMirror* mirror = view.Mirror()) {
    if (!next || !mirror->IsHit(*next)) return {};
    const Vector share = SurfaceShading(*next, path.direction, scene_.time).MirrorShare();
    weight = Times(weight, share);
    if (corrects) path.weight = Times(weight, AskSpace(path, sampler, next->distance).transparency);
    walked = next->distance;
    path.Turn(*next, {mirror->Turned(path.direction), {1, 1, 1}, kRayReflection});
    ++counts_.rays;
    next = Meet(path);
  }
  const Vector estimate =
      Times(weight, view.Expect(ray.direction, walked + (next ? next->distance : INFINITY)));
  if (!corrects) return estimate;
  Vector sum;
  for (int segment = 0; segment < kMostSegments; ++segment) {
    const VolumeQuery space = AskSpace(path, sampler, next ? next->distance : INFINITY);
    sum = sum + Times(path.weight, space.color);
    path.weight = Times(path.weight, space.transparency);
    if (!next) break;
    if (!PassesHole(*next, sampler)) {
      const SurfaceShading pane(*next, path.direction, scene_.time);
      path.weight = Times(path.weight, pane.StraightShare());
      path.type |= pane.StraightType();
    }
    if (IsBlack(path.weight)) break;
    path.origin = next->point - next->normal * next->offset;
    ++counts_.rays;
    next = Meet(path);
  }
  return estimate + (sum - estimate) * (1 / kCorrected);
}

std::optional<SurfaceHit> PathTracer::Meet(const Path& path) const {
  return scene_.surfaces.Intersect({path.origin, path.direction,
                                    std::numeric_limits<double>::infinity(), path.type,
                                    path.shutter});
}

Vector PathTracer::DirectLight(const Path& path, const SurfaceShading& shading,
                               const SurfaceHit& hit, Sampler& sampler) {
  const Vector start = hit.point + hit.normal * hit.offset;
  VolumeQuery query(scene_, thread_, counts_);
  query.ray.x = path.x, query.ray.y = path.y, query.ray.sample = path.sample;
  Vector sum;
  for (const LightSource& light : scene_.lights) {
    const auto [u, v] = sampler.Next2D();
    const std::uint64_t seed = sampler.NextSeed();
    const std::optional<LightSample> sample = light.Sample(start, u, v);
    if (!sample || !light.Info().Reaches(hit.object)) continue;
    const Vector share = shading.Share(sample->direction);
    if (IsBlack(share)) continue;
    sum = sum + Times(share, query.LightFrom(light, *sample, start, path.shutter, seed));
  }
  return sum;
}

}  // namespace host
