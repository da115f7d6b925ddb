// The pressure of the gas: owns the multigrid solver and the solids of the current substep.
#pragma once

#include "simulation/fluid/project.h"
#include "simulation/sim_system.h"

namespace nbx {

class FluidSystem;

class PressureSystem : public SimSystem, public FrameStorable {
 public:
  using SimSystem::SimSystem;

  /// Makes the divergence of the velocity equal to `source` (null: 0) and applies the boundary.
  /// False if nothing moves and nothing pushes: the velocity has then not changed.
  bool project(FluidSystem& fluid, MField* source, SolverProgress& progress);

  /// Solids belong to one active box.
  void resize(const Vec3i& /*delta*/) override { solids_ = {}; }
  void begin_frame(FieldSource& fields) override;
  void end_frame() override;
  void set_solids(const Solids& solids) override { solids_ = solids; }
  void clear() override { solids_ = {}; }

  void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) override;
  /// Solids come from the scene, not from frames.
  void load(SimFrame& /*frame*/) override {}

  /// What the last projection achieved.
  const Projection& last_solve() const { return last_solve_; }
  /// The largest residual of the frame's projections, in 1/s.
  float frame_residual() const { return frame_residual_; }
  /// Volume that expanded in the frame and had nowhere to go, in cubic simulation units.
  double frame_confined() const { return frame_confined_; }

 private:
  bool at_rest(MField* source);

  MultigridSolver3D solver_;
  Projection last_solve_;
  float frame_residual_ = 0;
  double frame_confined_ = 0;
  Solids solids_;
};

}  // namespace nbx
