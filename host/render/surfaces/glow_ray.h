// Chooses the ray that gathers the light of the glow for a point of a surface.
//
// Resampled importance sampling: J. Talbot, D. Cline and P. Egbert, Importance resampling for
// global illumination, EGSR 2005. Several directions are drawn cheaply: toward the glow, by the
// cosine, and by the highlight. Each gets a weight by what the grid expects to come from there, and
// only one is traced. The balance heuristic (E. Veach and L. Guibas, Optimally combining sampling
// techniques for Monte Carlo rendering, SIGGRAPH 1995) combines the three densities, so no
// direction has a density near 0 where it matters: the weight of the light has a bound even on a
// surface inside a flame.
#pragma once

#include "host/render/sampler.h"
#include "host/render/surfaces/glow_view.h"
#include "host/render/surfaces/surface_shading.h"

namespace host {

struct GlowRay {
  Vector direction;
  Vector weight;           ///< factor on the light from there; black if no ray is worth tracing
  std::uint32_t type = 0;  ///< RayType of the event at the surface
};

/// `view` is that from the shaded point. The mean of weight times light is the light of all
/// directions that cross the grid.
GlowRay ChooseGlowRay(const SurfaceShading& shading, const GlowView& view, Sampler& sampler);

}  // namespace host
