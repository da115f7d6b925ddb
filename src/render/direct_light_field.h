// Light that reaches a volume straight from the lights, with their shadows: computed where rays
// come by and kept in a grid.
//
// A light of color C from direction l adds to a ray of direction r
//
//     C (1 - g^2) / (1 - g l.r)^2
//
// the shape of L. G. Henyey and J. L. Greenstein, "Diffuse radiation in the galaxy" (Astrophysical
// Journal 93, 1941), with exponent 2 and without a constant.
#pragma once

#include <vector>

#include "render/lighting.h"
#include "render/shade/field3.h"

namespace nbx {

/// Where light is kept.
enum class LightCache {
  kLinear = 1,    ///< one grid, looked up trilinearly
  kCubic = 2,     ///< one grid, by cubic B-splines
  kPerLight = 3,  ///< one grid a light; the phase term is that of each sample's own ray
  kNone = 4,      ///< lights are asked at every sample
};

struct DirectLightParams {
  LightCache mode = LightCache::kLinear;
  double gridScale = 1;   // cells per voxel, above 0
  double anisotropy = 0;  // g, within (-1, 1)
  /// The camera, in world space. A cell of the modes with one grid holds the phase term of the
  /// line of sight from here: with that of whichever ray came first, pictures would depend on the
  /// order of rays.
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
  Color query_at(Lighting& lighting, const RayRecord& ray, const Vec3d& point);
  Color cached(std::size_t cache, Lighting& lighting, const Vec3d& cell);
  Color cell_light(std::size_t cache, Lighting& lighting, const Vec3d& world);

  DirectLightParams params_;
  const RenderVolume* volume_ = nullptr;
  std::vector<Field3> caches_;  // a cell of (-1, -1, -1) isn't computed yet
};

}  // namespace nbx
