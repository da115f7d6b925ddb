#include "simulation/steps/force_systems.h"

#include <cmath>

#include "math/spline_operators.h"
#include "simulation/fluid/curl_noise.h"
#include "simulation/fluid_system.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/vorticity.h"

namespace nbx {

void VorticitySystem::add_forces(FluidSystem& fluid, double dt) {
  if (!(params_.vorticity > 0) || fluid.U().empty()) return;
  const Location here = thread_location();
  const Vec3i dims = domain_.center_dims();
  MField wx(here, dims), wy(here, dims), wz(here, dims), magnitude(here, dims);
  m_velocity_curl(wx, wy, wz, magnitude, fluid.U(), fluid.V(), fluid.W(), domain_.dx);
  m_vorticity_confinement_force(wx, wy, wz, magnitude, domain_.dx * params_.vorticity);
  m_add_center_force_to_mac(fluid.U(), fluid.V(), fluid.W(), wx, wy, wz, 0.5 * dt);
}

// Tiles are drawn in sequence: a noise that starts at a later time would look different.
void NoiseForceSystem::catch_up(double from, double to) {
  if (!(params_.noise.amplitude > 0)) return;
  constexpr double most_tiles = 1 << 13;
  const double frequency = params_.noise.time_frequency;
  const double first = std::floor(std::abs(from * frequency));
  const double last = std::floor(std::abs(to * frequency));
  if (!(std::abs(last - first) <= most_tiles)) return;
  const double step = last < first ? -1 : 1;
  for (double i = first; i != last + step; i += step) advance_tile(noise_, i, true, false);
}

void NoiseForceSystem::add_detail(FluidSystem& fluid) {
  if (!(params_.noise.amplitude > 0)) return;
  NoiseParams params = params_.noise;
  params.offset += vector_cast<float>(domain_.active_box.lo);  // the noise rests in the domain
  params.time = clock_.now();
  advance_tile(noise_, params.time * params.time_frequency, true, false);

  const Location here = thread_location();
  MField psi(here, domain_.center_dims());
  m_fractal3D_field(psi, noise_, params, true);

  MField map;
  if (MField* driver = fields_->get_field(params.driver_key)) {
    map.resize(here, driver->dims());
    m_apply_function(map, *driver, params.driver_spline);
  }
  m_add_curl_of_scaled(fluid.detail(0), fluid.detail(1), fluid.detail(2), psi,
                       map.empty() ? nullptr : &map, 1);
  for (int axis = 0; axis < 3; ++axis) m_velocity_boundary(axis, fluid.detail(axis), domain_);
}

}  // namespace nbx
