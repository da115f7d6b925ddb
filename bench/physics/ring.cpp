// A vortex ring that moves along the axis of a tall box, against Kelvin's formula.
//
// The box is a quarter of the space: its walls x = 0 and z = 0 cut the ring through the axis, which
// changes nothing.
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr double kRadius = 0.15, kCore = 0.04, kStart = 0.3;  // the full box is 1 x 1 x 1
constexpr double kPi = std::numbers::pi;

// A velocity whose curl is the ring: circulation 1 around a core with a Gaussian profile. The
// projection leaves the curl and removes the rest.
Vec3d push(const Vec3d& x) {
  const double r = std::hypot(x[0], x[2]), y = x[1] - kStart;
  return {0,
          std::exp(-y * y / (kCore * kCore)) / (kCore * std::sqrt(kPi)) *
              std::erfc((r - kRadius) / kCore) / 2,
          0};
}

// Circulation and moments of the vorticity in the plane through the axis, next to the wall z = 0.
struct Core {
  double circulation = 0, radius = 0, y = 0, size = 0;
};

Core find_core(GasBox& box) {
  const Field<float>&u = box.velocity(0), &v = box.velocity(1);
  const Vec3i n = box.cells();
  const double dx = box.dx();
  const auto vorticity = [&](int i, int j) {
    return (double(u(i, j, 1)) - u(i, j - 1, 1) - v(i, j, 1) + v(i - 1, j, 1)) / dx;
  };
  const auto for_edges = [&](auto body) {
    for (int j = 2; j <= n[1]; ++j)
      for (int i = 2; i <= n[0]; ++i) body(vorticity(i, j), (i - 1) * dx, (j - 1) * dx);
  };
  double peak = 0;
  for_edges([&](double w, double, double) { peak = std::max(peak, w); });
  double sum = 0, x = 0, y = 0, square = 0;
  for_edges([&](double w, double px, double py) {
    if (w < 0.02 * peak) return;  // the wake
    sum += w;
    x += w * px;
    y += w * py;
    square += w * (px * px + py * py);
  });
  Core core{sum * dx * dx, x / sum, y / sum, 0};
  core.size = std::sqrt(square / sum - core.radius * core.radius - core.y * core.y);
  return core;
}

// Saffman 1970 for a Gaussian core, with the next term of Fukumoto and Moffatt 2000.
double kelvin_speed(const Core& core) {
  const double thickness = core.size / core.radius;
  return core.circulation / (4 * kPi * core.radius) *
         (std::log(8 / thickness) - 0.558 - 0.918 * thickness * thickness);
}

// What the mirror images of the ring in the walls add: dipoles along y, whose sign alternates
// across the walls y = 0 and y = 1.
double speed_by_images(const Core& core) {
  constexpr int kReach = 12;
  double sum = 0;
  const auto add = [&](double x, double y, double z, double sign) {
    const double d = std::sqrt(x * x + y * y + z * z);
    if (d > 1e-6) sum += sign * (3 * y * y - d * d) / std::pow(d, 5);
  };
  for (int i = -kReach; i <= kReach; ++i)
    for (int k = -kReach; k <= kReach; ++k)
      for (int j = -kReach; j <= kReach; ++j) {
        add(i, 2 * j, k, 1);
        add(i, 2 * j - 2 * core.y, k, -1);
      }
  return core.circulation * core.radius * core.radius / 4 * sum;
}

}  // namespace

RingMotion move_ring(int n, int interp_points) {
  GasBox box({n, 2 * n, n}, 0.5 / n, kClosed);
  box.run.params.interp_points = interp_points;
  box.run.params.max_cycles = 20;
  box.set_velocity(push);
  RingMotion motion;
  std::vector<double> times, heights;
  double theory = 0;
  for (Core core = find_core(box); core.y < 0.65 && box.time < 1; core = find_core(box)) {
    motion.rows.push_back({box.time, core.y, core.radius, core.size, core.circulation});
    if (core.y > kStart + 0.08) {  // the core has settled
      times.push_back(box.time);
      heights.push_back(core.y);
      theory += kelvin_speed(core) + speed_by_images(core);
    }
    box.step_cfl(1);
  }
  motion.speed = fit_line(times, heights).slope;
  motion.theory = theory / static_cast<double>(times.size());
  return motion;
}

// Curves: time, height, radius, core and circulation, at the finest resolution.
Result ring(Effort effort) {
  Result result;
  result.columns = {"time", "height", "radius", "core", "circulation"};
  for (const int n : {24, 48}) {
    if (effort == Effort::kQuick && n > 32) break;
    for (const int points : {3, 4}) {
      const RingMotion motion = move_ring(n, points);
      const std::string name = std::string(points == 4 ? "cubic" : "linear") + ", core of " +
                               std::to_string(2 * kCore * n).substr(0, 3) + " cells: ";
      result.figures.push_back({name + "speed", motion.speed, motion.theory});
      result.figures.push_back({name + "core at the end, from 0.04", motion.rows.back()[3]});
      result.figures.push_back({name + "circulation at the end", motion.rows.back()[4], 1});
      result.rows = motion.rows;
    }
  }
  return result;
}

}  // namespace nbx::physics
