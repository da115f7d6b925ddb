// The simulator's view of a scene, and the scene's view of a run. A scene reads the records of the
// run and returns what it has for the substep; it changes nothing else.
#pragma once

#include "simulation/domain.h"
#include "simulation/solids.h"
#include "simulation/solver_params.h"
#include "simulation/step_clock.h"
#include "simulation/step_sources.h"

namespace nbx {

/// The records of a run, for reading. They live as long as the run and change between substeps.
struct RunView {
  const SolverParams& params;
  const StepClock& clock;
  const Domain& domain;
};

/// What the scene sets for a substep.
struct StepSettings {
  SolverParams params;
  DomainSetup domain;
};

/// In each function `dt` is the length of the substep in seconds of simulation time, 0 for the
/// first frame.
class SceneEvaluator {
 public:
  virtual ~SceneEvaluator() = default;
  /// The settings at the start of the substep; parameters may be animated. What is constant over a
  /// run is taken over from `run`.
  virtual StepSettings read_settings(const RunView& run, double dt) = 0;
  /// Adds what the scene gives within the substep.
  virtual void update_inputs(const RunView& run, StepSources& sources, double dt) = 0;
  /// The solids at the end of the substep, in the active box; without `phi` if there are none.
  virtual Solids update_solids(const RunView& run, double dt) = 0;
};

}  // namespace nbx
