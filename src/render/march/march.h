// Marches one ray over stretches on which the same volumes are active.
#pragma once

#include <span>

#include "render/march/clip_ray.h"
#include "render/march/ray_random.h"
#include "render/volume_renderer.h"

namespace nbx {

/// What all active volumes yield at the samples of a block.
struct BlockSums {
  Colors emission;
  alignas(64) float extinction[kBlock];  // S, per unit of density
  alignas(64) float sigma[kBlock];       // K, per world unit
};

/// The state of a ray between stretches. After the last one, `finish` writes it to the record.
class March {
 public:
  March(const VolumeRenderer& renderer, RayRecord& ray, std::span<const VolumeEntry> entries);

  /// Light and transmittance over [a, b] with the active entries. False once the ray has ended.
  bool view(double a, double b);
  /// Transmittance over [a, b].
  bool shadow(double a, double b);
  void finish();

 private:
  struct Steps {
    double least, most;  // lengths
    bool skips;          // samples may be left out where the proximity says that nothing shows
  };
  Steps steps(double RenderVolume::*share) const;
  /// Calls body(t, n, dt) for blocks of n samples that lie dt apart over [a, b], the first at a
  /// random place within dt, until it gives false, which is then the result.
  template <class Body>
  bool each_block(double a, double b, const Steps& steps, const Body& body);
  bool view_fixed(double a, double b, const Steps& steps);
  bool view_adaptive(double a, double b, const Steps& steps);

  void evaluate(BlockSums& sums, const double* t, int n) const;
  void evaluate_shadow(float* sigma, const double* t, int n) const;
  double empty_distance_at(double t) const;
  bool add_step(const BlockSums& sums, const float* loss, int i);
  bool roulette();

  const VolumeRenderer& renderer_;
  RayRecord& ray_;
  std::span<const VolumeEntry> entries_;
  RayRandom random_;
  double transmittance_ = 1;        // of what was marched so far
  double radiance_[3] = {0, 0, 0};  // before the record's own transmittance
  double incoming_;                 // the record's largest transmittance
};

}  // namespace nbx
