// How a surface scatters light at a point: a diffuse ground, under it what passes through, and over
// both a layer that reflects.
//
// The layer's share follows C. Schlick, An inexpensive BRDF model for physically-based rendering,
// CGF 13(3), 1994, and is rough after B. Walter et al., Microfacet models for refraction through
// rough surfaces, EGSR 2007 (the GGX distribution), with directions drawn after E. Heitz, Sampling
// the GGX distribution of visible normals, JCGT 7(4), 2018.
#pragma once

#include "host/render/color.h"
#include "host/render/sampler.h"
#include "host/render/surfaces/glow_grid.h"
#include "host/render/surfaces/surface_scene.h"

namespace host {

class SurfaceShading {
 public:
  /// Of the hit, seen along `direction`.
  SurfaceShading(const SurfaceHit& hit, const Vector& direction, double time);

  const Vector& Emission() const { return emission_; }

  /// What of light from a direction goes to the viewer: times its color, which is irradiance over
  /// pi on a surface that faces it, it is the radiance.
  Vector Share(const Vector& to_light) const;

  /// A way on for a path. The weight is what the path's light counts for from then on.
  struct Bounce {
    Vector direction;
    Vector weight;
    std::uint32_t type = 0;  ///< what befell the path: a RayType; 0: it ends here
  };
  /// Chooses one of the ways; diffuse ones only with `indirect`, and then often towards the glow.
  Bounce Choose(Sampler& sampler, bool indirect, const GlowGrid& glow) const;

 private:
  Bounce Scatter(Sampler& sampler, double probability, const GlowGrid& glow) const;
  Bounce Reflect(Sampler& sampler, double probability) const;
  Bounce Transmit(Sampler& sampler, double probability) const;
  Vector MicroNormal(Sampler& sampler) const;
  Vector Mirrored(double cosine) const;
  double MaskingRatio(double to_viewer, double to_light) const;
  bool IsRough() const { return alpha_ > 0; }

  const SurfaceHit& hit_;
  Basis basis_;
  Vector viewer_;  ///< towards it, in the basis
  Vector diffuse_, passing_, reflection_, emission_;
  double alpha_ = 0;  ///< width of the microfacet distribution; 0 for a mirror
};

}  // namespace host
