// Vorticity confinement as a force of the simulation.
#pragma once

#include "simulation/sim_system.h"

namespace nbx {

class VorticitySystem : public SimSystem, public VelocityForce {
 public:
  using SimSystem::SimSystem;
  void add_forces(FluidSystem& fluid, double dt) override;
};

}  // namespace nbx
