#include "simulation/steps/noise_force_system.h"

#include <cmath>

#include "math/spline_operators.h"
#include "simulation/curl_noise.h"
#include "simulation/fluid_system.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

// A run goes through the tiles one by one, which is not the same as to begin late.
void NoiseForceSystem::catch_up(double from, double to) {
  if (!(settings_.noise.amplitude > 0)) return;
  constexpr double most_tiles = 1 << 13;
  const double frequency = settings_.noise.time_frequency;
  const double first = std::floor(std::abs(from * frequency));
  const double last = std::floor(std::abs(to * frequency));
  if (!(std::abs(last - first) <= most_tiles)) return;
  const double step = last < first ? -1 : 1;
  for (double i = first; i != last + step; i += step)
    advance_tile(noise_, static_cast<float>(i), true, false);
}

void NoiseForceSystem::add_detail(FluidSystem& fluid) {
  if (!(settings_.noise.amplitude > 0)) return;
  NoiseParams params = settings_.noise;
  params.offset += vector_cast<float>(settings_.active_box.lo);  // the noise stays in the domain
  params.time = static_cast<float>(settings_.sim_time.time.value() + settings_.frame_elapsed);
  advance_tile(noise_, params.time * params.time_frequency, true, false);

  const Location here = thread_location();
  MField psi(here, center_dims());
  m_fractal3D_field(psi, noise_, params, true);

  MField map;
  if (MField* driver = fields_->get_field(params.driver_key)) {
    map.resize(here, driver->dims());
    m_apply_function(map, *driver, params.driver_spline);
  }
  m_add_curl_of_scaled(fluid.detail(0), fluid.detail(1), fluid.detail(2), psi,
                       map.empty() ? nullptr : &map, 1);
  for (int axis = 0; axis < 3; ++axis) m_velocity_boundary(axis, fluid.detail(axis), settings_);
}

}  // namespace nbx
