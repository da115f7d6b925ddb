// Detail below what the solver resolves: the curl of a noise, added to the projected velocity. It
// is rebuilt every step and never advected.
#pragma once

#include "math/wavelet_noise.h"
#include "simulation/sim_system.h"

namespace nbx {

class NoiseForceSystem : public SimSystem, public VelocityForce {
 public:
  using SimSystem::SimSystem;

  void begin_frame(FieldSource& fields) override { fields_ = &fields; }
  void add_forces(FluidSystem& /*fluid*/, double /*dt*/) override {}
  /// Draws what a run from one time of the simulation to another has drawn on its way, so that it
  /// goes on with the same eddies: for states that don't hold the noise. It takes the strength and
  /// the period for constant, and the period for no shorter than a substep.
  void catch_up(double from, double to);
  NoiseState state() const { return noise_state(noise_); }
  void restore(const NoiseState& state) { restore_noise(noise_, state, true, false); }
  void add_detail(FluidSystem& fluid) override;

 private:
  WaveletNoise noise_;  // lives through `clear`, so that a run that goes on draws on
  FieldSource* fields_ = nullptr;
};

}  // namespace nbx
