// Traces light along paths from the camera: surfaces, lights and post effects.
#pragma once

#include "host/render/sampler.h"
#include "host/render/surfaces/glow_view.h"
#include "host/render/surfaces/surface_shading.h"
#include "host/render/trace/volume_query.h"

namespace host {

/// The result of one sample of a pixel.
struct PathSample {
  Vector color;                   ///< without the background
  Vector backdrop;                ///< the visible part of the background
  double alpha = 1;               ///< 1 minus the visible fraction of the background
  Vector volume;                  ///< light that post effects add along the camera ray
  Vector transmittance{1, 1, 1};  ///< fraction of light that they let pass
  /// Distance to the first surface along the view axis, in units. Infinite without one.
  double depth = std::numeric_limits<double>::infinity();
};

/// Traces paths on one thread.
class PathTracer {
 public:
  PathTracer(const RenderScene& scene, std::int32_t thread) : scene_(scene), thread_(thread) {}

  /// Sample number `sample` of the pixel (x, y).
  PathSample Trace(std::int32_t x, std::int32_t y, std::uint32_t sample);

  const RayCounts& Counts() const { return counts_; }

 private:
  struct Path;
  VolumeQuery AskSpace(const Path& path, Sampler& sampler, double distance);
  Vector DirectLight(const Path& path, const SurfaceShading& shading, const SurfaceHit& hit,
                     Sampler& sampler);
  Vector GlowLight(const Path& path, const SurfaceShading& shading, const SurfaceHit& hit,
                   Sampler& sampler);
  Vector GlowOf(const Path& from, const SurfaceShading& shading, const GlowView& view,
                Sampler& sampler);
  std::optional<SurfaceHit> Meet(const Path& path) const;
  bool PassesHole(const SurfaceHit& hit, Sampler& sampler) const;
  /// True if the reflection in the surface is one in which surfaces see the glow.
  bool IsGlowMirror(const SurfaceHit& hit) const;
  bool Continue(Path& path, const SurfaceHit& hit, Sampler& sampler);
  static bool Survives(Path& path, Sampler& sampler);

  const RenderScene& scene_;
  std::int32_t thread_;
  RayCounts counts_;
};

}  // namespace host
