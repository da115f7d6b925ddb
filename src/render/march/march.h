// Marches one ray over stretches of it. Within a stretch the same volumes are active.
#pragma once

#include <optional>
#include <span>

#include "render/march/clip_ray.h"
#include "render/march/march_kernels.h"
#include "render/march/ray_random.h"
#include "render/volume_renderer.h"

namespace nbx {

/// Sums over all active volumes at the samples of a block.
struct BlockSums {
  Colors emission;
  alignas(64) float extinction[kBlock];  // S, per unit of density
  alignas(64) float sigma[kBlock];       // K, per world unit
};

/// The state of a ray between stretches. After the last one, `finish` writes it to the record.
class March {
 public:
  March(const VolumeRenderer& renderer, RayRecord& ray, std::span<const VolumeEntry> entries);

  /// Light and transmittance over [begin, end] of the active entries. False once the ray has ended.
  bool view(double begin, double end);
  /// Transmittance alone over [begin, end].
  bool shadow(double begin, double end);
  void finish();

 private:
  struct StepLengths {
    double shortest, longest;  // in world units
    bool skip_empty;           // samples may be skipped where the proximity says that nothing shows
  };
  /// `share` is the member with the step of a volume in voxels: viewStep or shadowStep.
  StepLengths step_lengths(double RenderVolume::*share) const;
  double empty_distance_at(double t) const;

  bool view_fixed(double begin, double end, const StepLengths& lengths);
  bool view_adaptive(double begin, double end, const StepLengths& lengths);
  /// Covers [begin, end] with samples `step` apart, the first at a random place within a step, and
  /// calls body(start, step, n) for each block of n samples. Stops if it returns false, and returns
  /// that.
  template <class Body>
  bool for_each_block(double begin, double end, const StepLengths& lengths, const Body& body);

  void sum_volumes(BlockSums& sums, const double* t, int n) const;
  void sum_sigma(float* sigma, const double* t, int n) const;
  /// The only active volume, as kernels see it; none if there are others or if it needs more.
  std::optional<GasRay> gas_ray() const;
  /// How much light a step adds: the largest channel.
  double contribution(const BlockSums& sums, float loss, int i) const;
  bool add_step(const BlockSums& sums, float loss, int i);
  bool survives_roulette();

  const VolumeRenderer& renderer_;
  RayRecord& ray_;
  std::span<const VolumeEntry> entries_;
  RayRandom random_;
  double transmittance_ = 1;        // of the stretches so far
  double radiance_[3] = {0, 0, 0};  // before the record's own transmittance
  double incoming_;                 // the largest channel of the record's transmittance
};

}  // namespace nbx
