// One scalar quantity of the gas: density, temperature, fuel or burn. All have the same code; what
// makes them differ is their ChannelParams. A channel that isn't simulated does nothing in any hook
// and stays empty.
//
// Combustion spans two substeps. What burns is worked out at the end of one, from the field as it
// stands after the sources; at the start of the next the field loses just that, and the outputs
// get it. `burned` stands in between.
#pragma once

#include "math/sparse_field.h"
#include "simulation/fluid/diffusion_filter.h"
#include "simulation/fluid_system.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

class ScalarFluidChannel : public SimSystem,
                           public FrameStorable,
                           public FieldSource,
                           public VelocityForce,
                           public CombustionSource {
 public:
  ScalarFluidChannel(const SimSettings& settings, int key) : SimSystem(settings), key_(key) {}

  void resize(const Vec3i& delta) override;
  void end_frame() override { solid_.reset(); }
  void begin_step() override;
  void end_step() override;
  void after_sources() override;
  void content_box(IntBox& box) override;
  void src_bbox(IntBox& box) override;
  void set_solids(const Solids& solids) override;
  void clear() override;

  /// Decay over the substep, or the loss of what burned, then transport along the velocity.
  void decay_and_advect(FluidSystem& fluid, FieldSource& fields);

  /// Takes this channel's part of one source object; `weights` are in [0, 1]. An added amount goes
  /// onto the pending sources; a set amount lifts the channel up to it and never lowers it.
  void add_source(const SimulationObjectParameters& parameters,
                  const SparseField<float, 3>& weights);

  /// Takes what combustion gives, diffuses, brings the pending sources into the field, and works
  /// out what burns next.
  void finish_step(CombustionSource& combustion, FieldSource& fields);

  void store(SimFrame& frame, const SimSettings& settings, const GridMatrix& matrix) override;
  void load(SimFrame& frame) override;
  MField* get_field(int key) override;
  /// Buoyancy.
  void add_forces(FluidSystem& fluid, double dt) override;
  /// Expansion of what burned.
  bool add_divergence(MField& target, double dt) override;
  /// Gives channel `key` its share of what burned.
  void combustion(MField& target, int key) override;

  int key() const { return key_; }
  /// What burns in the next substep; empty if nothing does.
  MField& burned() { return burned_; }

 private:
  bool simulated() const { return settings_.simulated_channels.contains(key_); }
  const ChannelParams& params() const { return settings_.channel_params.at(key_); }
  double decay_of_step() const;
  MField* driver_field(FieldSource& fields, MField& blurred) const;
  void burn(FieldSource& fields);
  void diffuse();
  bool blurs_driver() const;

  const int key_;
  SparseField<float, 3> sources_;  // what sources gave in this substep
  MField field_;
  MField burned_;
  DiffusionFilter filter_;
  std::shared_ptr<MField> solid_;
};

}  // namespace nbx
