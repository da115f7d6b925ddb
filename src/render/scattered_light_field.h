// Light that the gas scatters any number of times. It is solved before the first ray, by a source
// iteration over sweeps of ray bundles (sweep_grid.h). Each sweep catches a share of the light that
// the sweep before sent out, until little is left. The result does not depend on the direction of
// view.
#pragma once

#include "render/light/sweep_grid.h"
#include "render/lighting.h"
#include "render/shade/field3.h"

namespace nbx {

struct ScatteredLightParams {
  bool cubic = false;    // look-up by cubic B-splines, otherwise trilinear
  double gridScale = 1;  // cells per voxel, above 0
  int maxSweeps = 1;     // at least 1
  int directions = 3;    // per side of a face, at least 1
  float directWeight = 1, emissionWeight = 1, extinctionScale = 1;
};

class ScatteredLightField final : public LightField {
 public:
  explicit ScatteredLightField(const ScatteredLightParams& params) : params_(params) {}

  /// Evaluates the lights in a team of `threadCount` threads; below 1 means all.
  [[nodiscard]] bool prepare(Lighting& lighting, const RenderVolume& volume, int threadCount,
                             const ProgressCallback& progress) override;
  void query(Colors& light, Lighting& lighting, const RayRecord& ray,
             const Points& points) override;
  const ScatteredLightParams& params() const { return params_; }

 private:
  bool iterate(Field3& source, const SweepMedium& medium, double cell_length, int threadCount,
               const ProgressCallback& progress);

  ScatteredLightParams params_;
  Field3 total_;
};

}  // namespace nbx
