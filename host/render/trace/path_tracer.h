// Light along a path from the camera: surfaces, lights and post effects together.
#pragma once

#include "host/render/sampler.h"
#include "host/render/surfaces/surface_shading.h"
#include "host/render/trace/volume_query.h"

namespace host {

/// What one sample of a pixel sees.
struct PathSample {
  Vector color;                   ///< without the background behind it
  Vector backdrop;                ///< the background, as far as it shows through
  double alpha = 1;               ///< 1 less what of the background shows through
  Vector volume;                  ///< what post effects add along the camera ray
  Vector transmittance{1, 1, 1};  ///< what they let pass there
  /// Of the first surface, along the camera's axis, in units; infinite without one.
  double depth = std::numeric_limits<double>::infinity();
};

/// Follows paths for one thread.
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
  bool GoOn(Path& path, const SurfaceHit& hit, Sampler& sampler);

  const RenderScene& scene_;
  std::int32_t thread_;
  RayCounts counts_;
};

}  // namespace host
