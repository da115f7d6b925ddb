#include "simulation/steps/vorticity_system.h"

#include "simulation/fluid_system.h"
#include "simulation/vorticity.h"

namespace nbx {

void VorticitySystem::add_forces(FluidSystem& fluid, double dt) {
  if (!(settings_.vorticity > 0) || fluid.U().empty()) return;
  const Location here = thread_location();
  MField wx(here, center_dims()), wy(here, center_dims()), wz(here, center_dims());
  MField magnitude(here, center_dims());
  m_velocity_curl(wx, wy, wz, magnitude, fluid.U(), fluid.V(), fluid.W(),
                  static_cast<float>(settings_.dx));
  m_vorticity_confinement_force(wx, wy, wz, magnitude,
                                static_cast<float>(settings_.dx * settings_.vorticity));
  m_add_center_force_to_mac(fluid.U(), fluid.V(), fluid.W(), wx, wy, wz,
                            static_cast<float>(0.5 * dt));
}

}  // namespace nbx
