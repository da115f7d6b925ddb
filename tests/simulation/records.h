// The records of a run, for tests of systems and of what reads settings.
#pragma once

#include "simulation/scene_evaluator.h"

namespace nbx::test {

struct Records {
  SolverParams params;
  StepClock clock;
  Domain domain;
  RunView view{params, clock, domain};
};

}  // namespace nbx::test
