#include "host/render/surfaces/surface_shading.h"

namespace host {
namespace {

constexpr Vector kWhite{1, 1, 1};

/// Below this width, highlights are too small to be hit by chance.
constexpr double kMirrorAlpha = 0.01;

Vector Clamped(const Vector& c) {
  return {std::clamp(c.x, 0.0, 1.0), std::clamp(c.y, 0.0, 1.0), std::clamp(c.z, 0.0, 1.0)};
}

Vector MirrorAbout(const Vector& v, const Vector& normal) {
  return normal * (2 * Dot(v, normal)) - v;
}

/// Smith's Lambda for a direction with that cosine.
double Lambda(double cosine, double alpha) {
  const double c2 = cosine * cosine;
  return 0.5 * (std::sqrt(1 + alpha * alpha * (1 - c2) / std::max(c2, 1e-12)) - 1);
}

double AlphaOf(const SurfaceMaterial& material) {
  const double roughness = std::clamp(material.roughness, 0.0, 1.0);
  return roughness * roughness < kMirrorAlpha ? 0 : roughness * roughness;
}

}  // namespace

bool IsMirror(const SurfaceMaterial& material) {
  return AlphaOf(material) <= 0 && !IsBlack(material.reflection);
}

SurfaceShading::SurfaceShading(const SurfaceHit& hit, const Vector& direction, double time)
    : hit_(hit), basis_(hit.smooth), viewer_(basis_.ToLocal(direction * -1)) {
  const SurfaceMaterial& material = *hit.material;
  emission_ = material.emission.At(hit.uvw, time);
  reflection_ = Clamped(material.reflection);
  alpha_ = AlphaOf(material);
  const Vector below = kWhite - Mirrored(viewer_.z);
  const Vector share = Clamped(material.transparency.At(hit.uvw, time));
  passing_ = Times(below, share);
  diffuse_ = Times(below, Times(kWhite - share, Clamped(material.color.At(hit.uvw, time))));
}

Vector SurfaceShading::Mirrored(double cosine) const {
  if (IsBlack(reflection_)) return {};
  const double x = 1 - std::clamp(cosine, 0.0, 1.0), x2 = x * x;
  return reflection_ + (kWhite - reflection_) * (x2 * x2 * x);
}

Vector SurfaceShading::Share(const Vector& to_light) const {
  const Lobes lobes = LobesTo(to_light);
  return lobes.diffuse + lobes.gloss;
}

SurfaceShading::Lobes SurfaceShading::LobesTo(const Vector& to_light) const {
  if (Dot(to_light, hit_.normal) <= 0) return {};
  const Vector light = basis_.ToLocal(to_light);
  if (light.z <= 0) return {};
  Lobes lobes{diffuse_ * light.z, {}, light.z / kPi};
  if (!HasGloss()) return lobes;
  // The light's cosine times pi D G / (4 cos cos), with D = a2 / (pi (cos2 (a2 - 1) + 1)^2).
  const Vector half = Normalized(light + viewer_);
  const double a2 = alpha_ * alpha_, d = half.z * half.z * (a2 - 1) + 1;
  const double viewer = Lambda(viewer_.z, alpha_), cosine = 4 * std::max(viewer_.z, 1e-6);
  const double masking = 1 / (1 + viewer + Lambda(light.z, alpha_));
  lobes.gloss = Mirrored(Dot(half, light)) * (a2 / (d * d) * masking / cosine);
  lobes.gloss_density = a2 / (d * d) / (kPi * (1 + viewer) * cosine);
  return lobes;
}

Vector SurfaceShading::DiffuseDirection(double u, double v) const {
  return basis_.ToWorld(CosineDirection(u, v));
}

Vector SurfaceShading::GlossDirection(double u, double v) const {
  return basis_.ToWorld(MirrorAbout(viewer_, RoughNormal(u, v)));
}

SurfaceShading::Bounce SurfaceShading::Choose(Sampler& sampler, bool indirect, double kept) const {
  const double mirror = Mean(Mirrored(viewer_.z)), transmit = Mean(passing_);
  const double scatter = indirect ? Mean(diffuse_) : 0;
  const double all = mirror + transmit + scatter;
  if (all <= 0) return {};
  const double reflect = IsRough() ? kept * mirror : mirror;
  const double chosen = sampler.Next1D() * all;
  if (chosen < reflect) return Reflect(sampler, reflect / all);
  if (chosen < reflect + transmit || !indirect) return Transmit(sampler, transmit / all);
  if (chosen >= reflect + transmit + kept * scatter && kept < 1) return {};
  return Scatter(sampler, kept * scatter / all);
}

SurfaceShading::Bounce SurfaceShading::Scatter(Sampler& sampler, double probability) const {
  const auto [u, v] = sampler.Next2D();
  return {DiffuseDirection(u, v), diffuse_ * (1 / probability), kRayIndirect};
}

SurfaceShading::Bounce SurfaceShading::Reflect(Sampler& sampler, double probability) const {
  const Vector normal = MicroNormal(sampler);
  const Vector out = MirrorAbout(viewer_, normal);
  const Vector direction = basis_.ToWorld(out);
  if (out.z <= 0 || Dot(direction, hit_.normal) <= 0) return {};
  const double weight = MaskingRatio(viewer_.z, out.z) / probability;
  return {direction, Mirrored(Dot(viewer_, normal)) * weight,
          IsRough() ? kRayRoughReflection : kRayReflection};
}

SurfaceShading::Bounce SurfaceShading::Transmit(Sampler& sampler, double probability) const {
  const double index = hit_.material->refraction;
  const Vector weight = passing_ * (1 / probability);
  if (index == 1) return {basis_.ToWorld(viewer_ * -1), weight, StraightType()};
  // Snell's law.
  const Vector normal = MicroNormal(sampler);
  const double eta = hit_.outer ? 1 / index : index;
  const double cosine = Dot(viewer_, normal);
  const double cosine2 = 1 - eta * eta * (1 - cosine * cosine);
  if (cosine2 <= 0)  // total reflection
    return {basis_.ToWorld(MirrorAbout(viewer_, normal)), weight,
            IsRough() ? kRayRoughReflection : kRayReflection};
  const Vector out = viewer_ * -eta + normal * (eta * cosine - std::sqrt(cosine2));
  if (out.z >= 0) return {};
  return {basis_.ToWorld(out), weight * MaskingRatio(viewer_.z, -out.z),
          IsRough() ? kRayRoughRefraction : kRayRefraction};
}

Vector SurfaceShading::MicroNormal(Sampler& sampler) const {
  if (!IsRough()) return {0, 0, 1};
  const auto [u, v] = sampler.Next2D();
  return RoughNormal(u, v);
}

Vector SurfaceShading::RoughNormal(double u, double v) const {
  // Stretch to a hemisphere, sample its visible part, and unstretch.
  const Vector stretched =
      Normalized({alpha_ * viewer_.x, alpha_ * viewer_.y, std::max(viewer_.z, 1e-6)});
  const Basis about(stretched);
  Vector on_disk = OnDisk(u, v);
  // Half of the disk is compressed, because that part of the hemisphere faces away.
  const Vector up = Normalized(Vector{0, 0, 1} - stretched * stretched.z);
  const bool upright = Length(up) <= 0;
  const Vector t2 = upright ? about.s : up, t1 = Cross(t2, stretched);
  const double s = 0.5 * (1 + stretched.z);
  const double rim = std::sqrt(std::max(0.0, 1 - on_disk.x * on_disk.x));
  on_disk.y = (1 - s) * rim + s * on_disk.y;
  const double rest = 1 - on_disk.x * on_disk.x - on_disk.y * on_disk.y;
  const Vector n = t1 * on_disk.x + t2 * on_disk.y + stretched * std::sqrt(std::max(0.0, rest));
  return Normalized({alpha_ * n.x, alpha_ * n.y, std::max(1e-6, n.z)});
}

double SurfaceShading::MaskingRatio(double to_viewer, double to_light) const {
  if (!IsRough()) return 1;
  const double l = Lambda(to_viewer, alpha_);
  return (1 + l) / (1 + l + Lambda(to_light, alpha_));
}

}  // namespace host
