// One stage of a simulation: a class that overrides some of these hooks. Simulation3D calls each
// hook on all systems in the order of their creation; the order of the hooks is that of a substep.
#pragma once

#include "simulation/sim_interfaces.h"
#include "simulation/solids.h"

namespace nbx {

class SimSystem {
 public:
  explicit SimSystem(const SimSettings& settings) : settings_(settings) {}
  virtual ~SimSystem() = default;
  SimSystem(const SimSystem&) = delete;
  SimSystem& operator=(const SimSystem&) = delete;

  /// The active box changed; `delta` = new lo - old lo. Content keeps its place in the domain.
  virtual void resize(const Vec3i& /*delta*/) {}
  virtual void begin_frame(FieldSource& /*fields*/) {}
  virtual void end_frame() {}
  virtual void begin_step() {}
  virtual void end_step() {}
  virtual void prepare_advection() {}
  virtual void after_channel_advection() {}
  virtual void after_velocity_advection() {}
  virtual void after_sources() {}
  /// The box of what this system holds, in domain cells; left empty where it holds nothing.
  virtual void content_box(IntBox& /*box*/) {}
  /// The box of what this system received in this substep.
  virtual void src_bbox(IntBox& /*box*/) {}
  virtual void set_solids(const Solids& /*solids*/) {}
  /// Drops all state.
  virtual void clear() {}

 protected:
  /// Dimensions of a center field of the active box, ghost layer included.
  Vec3i center_dims() const { return settings_.active_box.size() + Vec3i(2, 2, 2); }

  const SimSettings& settings_;
};

}  // namespace nbx
