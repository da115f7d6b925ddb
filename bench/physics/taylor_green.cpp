// The vortex of Taylor and Green between walls, u = sin x cos y, v = -cos x sin y on [0, pi]^2, is
// a steady flow without viscosity. All change is the error of the scheme.
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

Vec3d vortex(const Vec3d& x) {
  return {std::sin(x[0]) * std::cos(x[1]), -std::cos(x[0]) * std::sin(x[1]), 0};
}

}  // namespace

VortexChange taylor_green_change(int n, int interp_points, double cfl) {
  GasBox box({n, n, 4}, std::numbers::pi / n, kClosed);
  box.run.params.interp_points = interp_points;
  box.run.params.pressure_tolerance = 1e-4;
  box.run.params.max_cycles = 80;
  box.set_velocity(vortex);
  const int steps = static_cast<int>(std::lround(1 / (cfl * box.dx())));
  for (int i = 0; i < steps; ++i) box.step(1.0 / steps);

  double before = 0, after = 0, after_at_wall = 0, change = 0;
  for (int axis = 0; axis < 2; ++axis) {
    const Field<float>& f = box.velocity(axis);
    for_cells({n, n, 1}, [&](int i, int j, int k) {
      const double start = vortex(box.face(axis, i, j, k))[axis], end = f(i, j, 2);
      before += start * start;
      after += end * end;
      after_at_wall += double(f(i, j, 1)) * f(i, j, 1);
      change += (end - start) * (end - start);
    });
  }
  return {1 - after / before, 1 - after_at_wall / before, std::sqrt(change / (2.0 * n * n))};
}

// A viscosity nu would take exp(-4 nu t) of the energy, and t is 1. Curves: cells, then the loss of
// energy, linear, cubic, and linear in the layer next to a wall.
Result taylor_green(Effort effort) {
  Result result;
  result.columns = {"cells", "linear", "cubic", "linear, next to a wall"};
  std::vector<double> sizes, lost, lost_cubic, changed;
  for (const int n : {16, 32, 64, 128}) {
    if (effort == Effort::kQuick && n > 64) break;
    const VortexChange linear = taylor_green_change(n, 3, 0.5);
    const VortexChange cubic = taylor_green_change(n, 4, 0.5);
    result.rows.push_back(
        {1.0 * n, linear.energy_lost, cubic.energy_lost, linear.energy_lost_at_wall});
    sizes.push_back(n);
    lost.push_back(linear.energy_lost);
    lost_cubic.push_back(cubic.energy_lost);
    changed.push_back(linear.change);
  }
  const double half_step = taylor_green_change(64, 3, 0.25).energy_lost;
  result.figures = {
      {"order of the energy", -fit_exponent(sizes, lost), 1},
      {"order of the energy, cubic", -fit_exponent(sizes, lost_cubic), 1},
      {"order of the velocity", -fit_exponent(sizes, changed), 1},
      {"64 cells: viscosity over U dx", -std::log(1 - lost[2]) / 4 * 64 / std::numbers::pi},
      {"64 cells: half the step, energy lost over that at the whole", half_step / lost[2]},
      {"64 cells: energy lost next to a wall, over that inside", result.rows[2][3] / lost[2]},
  };
  return result;
}

}  // namespace nbx::physics
