// The pressure of the gas: owns the multigrid solver and the solids of the current substep.
#pragma once

#include "math/multigrid_solver3d.h"
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
  void end_frame() override;
  void set_solids(const Solids& solids) override { solids_ = solids; }
  void clear() override { solids_ = {}; }

  void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) override;
  /// Solids come from the scene, not from frames.
  void load(SimFrame& /*frame*/) override {}

  /// What the last solve achieved.
  const SolveResult& last_solve() const { return last_solve_; }

 private:
  bool at_rest(MField* source);

  MultigridSolver3D solver_;
  SolveResult last_solve_;
  Solids solids_;
};

}  // namespace nbx
