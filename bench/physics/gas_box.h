// A box of gas that a case fills and steps. All of its cells are simulated, and a step is a substep
// of the run: the same phases as in a user's scene.
//
// Positions are in meters from the low corner of the box.
#pragma once

#include <functional>
#include <memory>

#include "simulation/simulation3d.h"

namespace nbx::physics {

using Faces = std::array<int, 6>;  ///< x-, x+, y-, y+, z-, z+: 1 = wall, 0 = open
inline constexpr Faces kClosed{1, 1, 1, 1, 1, 1};

class GasBox : private SceneEvaluator, private SolverProgress {
 public:
  /// Gas at rest. It has density and temperature, without buoyancy.
  GasBox(const Vec3i& cells, double dx, const Faces& closed);

  const Vec3i& cells() const { return cells_; }
  double dx() const { return setup.dx; }

  /// The center of cell (i, j, k) of a channel; its indices count from 1, since there are ghosts.
  Vec3d center(int i, int j, int k) const;
  /// The place of sample (i, j, k) of a component of the velocity.
  Vec3d face(int axis, int i, int j, int k) const;

  /// Sets the velocity, in m/s, by its value at each face, ghosts included.
  void set_faces(const std::function<Vec3d(const Vec3d&)>& velocity);
  /// Makes the velocity free of divergence.
  void project() { run.pressure().project(run.fluid(), nullptr, *this); }
  /// set_faces and project.
  void set_velocity(const std::function<Vec3d(const Vec3d&)>& velocity);
  void set_channel(int key, const std::function<double(const Vec3d&)>& value);
  /// Channel `key` accelerates the gas along +y, by this much where it is 1.
  void set_buoyancy(int key, double acceleration);

  /// Advances by dt seconds; adds them to `time`.
  void step(double dt);
  /// The same, with a step in which the fastest gas travels `cfl` cells.
  void step_cfl(double cfl);

  const Field<float>& velocity(int axis) { return run.fluid().component(axis).read_cpu(); }
  const Field<float>& channel(int key) { return run.channel_field(key)->read_cpu(); }
  double max_speed();

  Simulation3D run;   ///< its `params` may be set between steps
  DomainSetup setup;  ///< likewise
  double time = 0;
  std::function<void(StepSources&)> sources;            ///< called in each step, if set
  std::function<Solids(const Domain&, double)> solids;  ///< at a time, likewise

 private:
  StepSettings read_settings(const RunView& view, double) override { return {view.params, setup}; }
  void update_inputs(const RunView& view, StepSources& given, double) override;
  Solids update_solids(const RunView& view, double dt) override;
  bool abort_requested(int, int) override { return false; }

  Vec3i cells_;
};

/// The weights of a source: 1 in the cells for which `holds` is true.
using Weights = std::shared_ptr<SparseField<float, 3>>;
Weights weights_where(const Vec3i& cells, const std::function<bool(const Vec3i&)>& holds);

/// Calls body(i, j, k) for all cells of the box, from (1, 1, 1) on.
template <class Body>
void for_cells(const Vec3i& cells, Body body) {
  for (int k = 1; k <= cells[2]; ++k)
    for (int j = 1; j <= cells[1]; ++j)
      for (int i = 1; i <= cells[0]; ++i) body(i, j, k);
}

}  // namespace nbx::physics
