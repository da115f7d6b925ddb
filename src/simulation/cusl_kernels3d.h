// The velocity system of every run: semi-Lagrangian transport with MacCormack correction on a
// staggered grid, forces, and projection.
#pragma once

#include "simulation/fluid/advection.h"
#include "simulation/fluid_system.h"

namespace nbx {

class CuslKernels3D : public FluidSystem {
 public:
  using FluidSystem::FluidSystem;

  void begin_frame(FieldSource& fields) override;
  /// Writes the velocity line to the log.
  void end_frame() override;
  /// Sets up the trace that all channels of a substep share.
  void prepare_advection() override;
  void after_channel_advection() override;
  void clear() override;

  void advect_field(MField& field, const Occupancy& held, bool conserve) override;
  void advect_velocity() override;
  void update(double dt, PressureSystem& pressure, VelocityForce& forces,
              SolverProgress& progress) override;
  double max_step() override;
  void grow_box(double dt, IntBox& box) override;

 protected:
  /// The transport of this substep along the velocity.
  AdvectionParams advection_params(Lookup lookup);

 private:
  void clamp_to_grid();
  void build_detail(VelocityForce& forces);

  // Seconds of this frame, by kind of work.
  struct Times {
    double advection = 0, forces = 0, detail = 0, projection = 0;
  };

  std::array<MField, 6> traces_;    // back x, y, z, forward x, y, z
  AdvectionParams channel_params_;  // shared by the channels of a substep
  Times times_;
};

}  // namespace nbx
