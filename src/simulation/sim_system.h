// One part of a simulation: a class that overrides some of these hooks. Simulation3D calls each
// hook on all systems in the order of their creation; the order of the hooks is that of a substep.
#pragma once

#include "simulation/scene_evaluator.h"
#include "simulation/sim_interfaces.h"
#include "simulation/solids.h"

namespace nbx {

class SimSystem {
 public:
  /// The records of the run must outlive the system.
  explicit SimSystem(const RunView& run)
      : params_(run.params), clock_(run.clock), domain_(run.domain) {}
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
  /// The box of what this system holds, in domain cells; left empty if it holds nothing.
  virtual void content_box(IntBox& /*box*/) {}
  virtual void set_solids(const Solids& /*solids*/) {}
  /// Drops all state.
  virtual void clear() {}

 protected:
  const SolverParams& params_;
  const StepClock& clock_;
  const Domain& domain_;
};

}  // namespace nbx
