// How a surface scatters light at a point: a diffuse layer, transmission below it, and a reflecting
// layer on top.
//
// The reflectance follows C. Schlick, An inexpensive BRDF model for physically-based rendering, CGF
// 13(3), 1994. Rough reflection uses the GGX distribution (B. Walter et al., Microfacet models for
// refraction through rough surfaces, EGSR 2007) and samples visible normals (E. Heitz, Sampling the
// GGX distribution of visible normals, JCGT 7(4), 2018).
#pragma once

#include "host/render/color.h"
#include "host/render/sampler.h"
#include "host/render/surfaces/surface_scene.h"

namespace host {

/// True if all light that the surface reflects goes in the mirrored direction.
bool IsMirror(const SurfaceMaterial& material);

class SurfaceShading {
 public:
  /// `direction` is the direction of the ray that hit the surface.
  SurfaceShading(const SurfaceHit& hit, const Vector& direction, double time);

  const Vector& Emission() const { return emission_; }

  /// The fraction of light from a direction that goes to the viewer. Multiplied by the light's
  /// color (irradiance over pi on a surface facing the light) it gives the radiance.
  Vector Share(const Vector& to_light) const;

  /// Share in two parts, and the density per solid angle with which each part draws a direction.
  struct Lobes {
    Vector diffuse, gloss;
    double diffuse_density = 0, gloss_density = 0;
  };
  Lobes LobesTo(const Vector& to_light) const;
  bool HasGloss() const { return IsRough() && !IsBlack(reflection_); }
  /// True if the surface scatters light into more than single directions.
  bool IsDull() const { return HasGloss() || !IsBlack(diffuse_); }
  Vector DiffuseDirection(double u, double v) const;
  Vector GlossDirection(double u, double v) const;
  /// The fraction of light that a mirror reflects.
  Vector MirrorShare() const { return IsRough() ? Vector{} : Mirrored(viewer_.z); }
  /// The fraction of light that passes straight through.
  Vector StraightShare() const { return hit_.material->refraction == 1 ? passing_ : Vector{}; }
  /// The RayType of that event.
  std::uint32_t StraightType() const {
    return IsRough() ? kRayRoughTransparency : kRayTransparency;
  }

  /// The next segment of a path. `weight` is the factor on the light of the rest of the path.
  struct Bounce {
    Vector direction;
    Vector weight;
    std::uint32_t type = 0;  ///< RayType of the event; 0: the path ends here
  };
  /// Chooses the next segment. Diffuse bounces only happen with `indirect`. Segments of diffuse and
  /// glossy light get a fraction `kept` of their chance; the path ends with the rest.
  Bounce Choose(Sampler& sampler, bool indirect, double kept) const;

 private:
  Bounce Scatter(Sampler& sampler, double probability) const;
  Bounce Reflect(Sampler& sampler, double probability) const;
  Bounce Transmit(Sampler& sampler, double probability) const;
  Vector MicroNormal(Sampler& sampler) const;
  Vector RoughNormal(double u, double v) const;
  Vector Mirrored(double cosine) const;
  double MaskingRatio(double to_viewer, double to_light) const;
  bool IsRough() const { return alpha_ > 0; }

  const SurfaceHit& hit_;
  Basis basis_;
  Vector viewer_;  ///< direction to the viewer, in the basis
  Vector diffuse_, passing_, reflection_, emission_;
  double alpha_ = 0;  ///< width of the microfacet distribution; 0 for a mirror
};

}  // namespace host
