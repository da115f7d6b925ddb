// Light that reaches a volume directly from the lights, with their shadows. It is computed where
// rays pass and cached in a grid.
//
// A light of color C from direction l adds to a ray of direction r
//
//     C (1 - g^2) / (1 - g l.r)^2
//
// This is the phase function of L. G. Henyey and J. L. Greenstein, "Diffuse radiation in the
// galaxy" (Astrophysical Journal 93, 1941), but with exponent 2 and without its constant.
#pragma once

#include <vector>

#include "render/light/lazy_light.h"
#include "render/lighting.h"

namespace nbx {

/// Where light is cached.
enum class LightCache {
  kLinear = 1,    ///< one grid, looked up trilinearly
  kCubic = 2,     ///< one grid, by cubic B-splines
  kPerLight = 3,  ///< one grid per light; each sample uses the phase term of its own ray
  kNone = 4,      ///< not at all: lights are evaluated at every sample
};

struct DirectLightParams {
  LightCache mode = LightCache::kLinear;
  double gridScale = 1;   // cells per voxel, above 0
  double anisotropy = 0;  // g, within (-1, 1)
  /// The camera, in world space. In the modes with one grid, a cell contains the phase term for the
  /// line of sight from here. The phase term of the first ray that needs the cell would make
  /// pictures depend on the order of rays.
  Vec3d eye = {};
};

class DirectLightField final : public LightField {
 public:
  explicit DirectLightField(const DirectLightParams& params) : params_(params) {}

  [[nodiscard]] bool prepare(Lighting& lighting, const RenderVolume& volume, int threadCount,
                             const ProgressCallback& progress) override;
  void query(Colors& light, Lighting& lighting, const RayRecord& ray,
             const Points& points) override;
  const DirectLightParams& params() const { return params_; }

 private:
  void query_cache(Colors& light, LazyLight& cache, std::size_t number, Lighting& lighting,
                   int thread, const Points& points);
  Color light_at(Lighting& lighting, const RayRecord& ray, const Vec3d& world);
  Color cell_light(std::size_t cache, Lighting& lighting, int thread, const Vec3d& world);

  DirectLightParams params_;
  const RenderVolume* volume_ = nullptr;
  std::vector<LazyLight> caches_;
};

}  // namespace nbx
