// Forces of the gas as systems of a run: vorticity confinement and noise detail.
#pragma once

#include "math/wavelet_noise.h"
#include "simulation/sim_system.h"

namespace nbx {

/// Restores the small swirls that numerical dissipation removes (vorticity.h).
class VorticitySystem : public SimSystem, public VelocityForce {
 public:
  using SimSystem::SimSystem;
  void add_forces(FluidSystem& fluid, double dt) override;
};

/// Detail below what the grid resolves: the curl of a noise, added to the projected velocity. It is
/// rebuilt in every substep and never advected.
class NoiseForceSystem : public SimSystem, public VelocityForce {
 public:
  using SimSystem::SimSystem;

  void begin_frame(FieldSource& fields) override { fields_ = &fields; }
  void add_forces(FluidSystem& /*fluid*/, double /*dt*/) override {}
  void add_detail(FluidSystem& fluid) override;

  NoiseState state() const { return noise_state(noise_); }
  void restore(const NoiseState& state) { restore_noise(noise_, state, true, false); }
  /// Draws the tiles that a run between two simulation times has drawn, so that a run that
  /// continues from a state without noise keeps the eddies. Assumes a constant strength, and a
  /// constant period that is no shorter than a substep.
  void catch_up(double from, double to);

 private:
  WaveletNoise noise_;  // `clear` keeps it: a run that continues draws the next numbers
  FieldSource* fields_ = nullptr;
};

}  // namespace nbx
