// One scalar quantity of the gas: density, temperature, fuel or burn. They differ only in their
// ChannelParams. A channel that isn't simulated does nothing in any hook and stays empty.
//
// Combustion spans two substeps. At the end of one, what burns is computed from the field with its
// sources. At the start of the next the field loses that much, and the outputs receive it. `burned`
// holds it in between.
#pragma once

#include "math/occupancy.h"
#include "simulation/fluid/diffusion_filter.h"
#include "simulation/fluid_system.h"

namespace nbx {

class ScalarFluidChannel : public SimSystem,
                           public FrameStorable,
                           public FieldSource,
                           public VelocityForce,
                           public CombustionSource {
 public:
  ScalarFluidChannel(const RunView& run, int key) : SimSystem(run), key_(key) {}

  void resize(const Vec3i& delta) override;
  void end_frame() override { solid_.reset(); }
  void begin_step() override;
  void end_step() override;
  void after_sources() override;
  void content_box(IntBox& box) override;
  void set_solids(const Solids& solids) override;
  void clear() override;

  /// Decay over the substep, or the loss of what burned. Then transport along the velocity.
  void decay_and_advect(FluidSystem& fluid, FieldSource& fields);

  /// Combustion, diffusion and sources, then what burns next. Uses `sources` up.
  void finish_step(CombustionSource& combustion, FieldSource& fields,
                   SparseField<float, 3>& sources);

  void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) override;
  void load(SimFrame& frame) override;
  MField* get_field(int key) override;
  /// Buoyancy.
  void add_forces(FluidSystem& fluid, double dt) override;
  /// Expansion of what burned.
  bool add_divergence(MField& target, double dt) override;
  /// Gives channel `key` its share of what burned.
  bool combustion(MField& target, int key) override;

  int key() const { return key_; }
  /// The field may have got more from outside.
  void forget_held() { held_.forget(); }
  /// What burns in the next substep; empty if nothing does.
  MField& burned() { return burned_; }

 private:
  bool simulated() const { return params_.simulated_channels.contains(key_); }
  const ChannelParams& params() const { return params_.channel_params.at(key_); }
  double decay_of_step() const;
  void decay(FieldSource& fields);
  MField* driver_field(FieldSource& fields, MField& blurred) const;
  void burn(FieldSource& fields);
  void diffuse();
  bool blurs_driver() const;

  const int key_;
  MField field_;
  Occupancy held_;  // parts of the field; forgotten whenever the field may get more
  MField burned_;
  bool burning_ = true;  // else `burned_` is 0
  MField own_;  // the field without the sources of the step, until solids come, if it's conserved
  DiffusionFilter filter_;
  std::shared_ptr<MField> solid_;
};

}  // namespace nbx
