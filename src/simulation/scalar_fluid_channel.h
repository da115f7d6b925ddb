// One scalar quantity of the gas: density, temperature, fuel or burn. All have the same code; what
// makes them differ is their ChannelParams. A channel that isn't simulated does nothing in any hook
// and stays empty.
#pragma once

#include "math/sparse_field.h"
#include "simulation/fluid_system.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

class ScalarFluidChannel : public SimSystem,
                           public FrameStorable,
                           public FieldSource,
                           public VelocityForce {
 public:
  ScalarFluidChannel(const SimSettings& settings, int key) : SimSystem(settings), key_(key) {}

  void resize(const Vec3i& delta) override;
  void end_frame() override { solid_.reset(); }
  void begin_step() override;
  void set_solids(const Solids& solids) override;
  void clear() override;

  /// Decay over the substep, then transport along the velocity.
  void decay_and_advect(FluidSystem& fluid);

  /// Takes this channel's part of one source object; `weights` are in [0, 1]. An added amount goes
  /// onto the pending sources; a set amount lifts the channel up to it and never lowers it.
  void add_source(const SimulationObjectParameters& parameters,
                  const SparseField<float, 3>& weights);

  /// Brings the pending sources into the field.
  void finish_step();

  void store(SimFrame& frame, const SimSettings& settings, const GridMatrix& matrix) override;
  void load(SimFrame& frame) override;
  MField* get_field(int key) override;
  /// Buoyancy.
  void add_forces(FluidSystem& fluid, double dt) override;

  int key() const { return key_; }

 private:
  bool simulated() const { return settings_.simulated_channels.contains(key_); }
  const ChannelParams& params() const { return settings_.channel_params.at(key_); }

  const int key_;
  SparseField<float, 3> sources_;  // what sources gave in this substep
  MField field_;
  std::shared_ptr<MField> solid_;
};

}  // namespace nbx
