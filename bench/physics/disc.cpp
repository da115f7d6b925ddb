// A disc that a solid rotation carries once round. The velocity is given; only transport is at
// work.
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr double kRadius = 0.15,
                 kFromAxis = 0.25;  // of the disc and of its path, in a box of 1 x 1
constexpr double kTurn = 2 * std::numbers::pi;

// What remains of the disc after it went round.
DiscState compare(const Field<float>& before, const Field<float>& after, int n) {
  DiscState state;
  double mass = 0, left = 0, x = 0, y = 0;
  for_cells({n, n, 1}, [&](int i, int j, int) {
    const double a = before(i, j, 2), b = after(i, j, 2);
    mass += a;
    left += b;
    state.error += std::abs(b - a);
    state.peak = std::max(state.peak, b);
    x += b * (i - 0.5 - 0.5 * n);
    y += b * (j - 0.5 - 0.5 * n);
  });
  state.error /= mass;
  state.mass = left / mass;
  state.lag = std::atan2(x, y);  // it started straight above the axis and turns to the left
  return state;
}

}  // namespace

DiscState turn_disc(int n, double cfl, int interp_points) {
  GasBox box({n, n, 4}, 1.0 / n, {});
  box.run.params.interp_points = interp_points;
  const int steps = static_cast<int>(std::lround(kTurn * (kRadius + kFromAxis) * n / cfl));
  box.set_channel(kDensity, [](const Vec3d& x) {
    return std::hypot(x[0] - 0.5, x[1] - 0.5 - kFromAxis) < kRadius ? 1 : 0;
  });
  Field<float> before;
  before.copy(box.channel(kDensity));
  box.set_faces([](const Vec3d& x) { return Vec3d(0.5 - x[1], x[0] - 0.5, 0); });
  box.run.clock.dt = kTurn / steps;
  box.run.fluid().prepare_advection();
  MField& density = *box.run.channel_field(kDensity);
  for (int i = 0; i < steps; ++i) box.run.fluid().advect_field(density, {}, false);
  DiscState state = compare(before, box.channel(kDensity), n);
  // A midpoint step by the angle z turns a point by atan(z / (1 - z^2 / 2)).
  const double z = kTurn / steps;
  state.lag_of_midpoint_rule = kTurn - steps * std::atan(z / (1 - z * z / 2));
  return state;
}

// Curves: CFL, then error, mass and lag, linear and cubic.
Result disc(Effort effort) {
  const int n = effort == Effort::kFull ? 128 : 64;
  Result result;
  result.columns = {"cfl",          "error, linear", "mass, linear", "lag, linear",
                    "error, cubic", "mass, cubic",   "lag, cubic",   "lag, midpoint rule"};
  for (const double cfl : {0.5, 1.0, 2.0, 4.0}) {
    const DiscState a = turn_disc(n, cfl, 3), b = turn_disc(n, cfl, 4);
    result.rows.push_back(
        {cfl, a.error, a.mass, a.lag, b.error, b.mass, b.lag, a.lag_of_midpoint_rule});
    const std::string at = " at CFL " + std::to_string(cfl).substr(0, 3);
    result.figures.push_back({"error, linear" + at, a.error});
    result.figures.push_back({"error, cubic" + at, b.error});
    result.figures.push_back({"mass, linear" + at, a.mass, 1});
    result.figures.push_back({"mass, cubic" + at, b.mass, 1});
    if (cfl == 4) result.figures.push_back({"lag" + at, b.lag, b.lag_of_midpoint_rule});
  }
  const double coarse = turn_disc(n / 2, 0.5, 3).error, cubic = turn_disc(n / 2, 0.5, 4).error;
  result.figures.push_back({"order, linear", std::log2(coarse / result.rows[0][1]), 2.0 / 3});
  result.figures.push_back({"order, cubic", std::log2(cubic / result.rows[0][4]), 2.0 / 3});
  return result;
}

}  // namespace nbx::physics
