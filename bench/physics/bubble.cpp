// A bubble of hot gas that rises in a shaft, while cold gas falls along its walls. It comes from
// the wave on a flat layer, first with the growth rate of Rayleigh and Taylor, then at a constant
// speed.
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr double kWave = 1, kPush = 1;  // length of the wave in m, buoyancy of hot gas in m/s^2
constexpr double kHeight = 3, kLayer = 1.25;
constexpr double kPi = std::numbers::pi;

// Where the temperature in the first column falls through 1/2, from above.
double tip(GasBox& box) {
  const Field<float>& t = box.channel(kTemperature);
  int j = box.cells()[1];
  while (j > 1 && t(1, j, 2) < 0.5f) --j;
  const double low = t(1, j, 2), high = t(1, j + 1, 2);
  return (j - 0.5 + (low > high ? (low - 0.5) / (low - high) : 0)) * box.dx() - kLayer;
}

struct Rise {
  double growth = 0, speed = 0;
  std::vector<std::vector<double>> rows;
};

// `n` cells for half a wave: the walls of the shaft cut the waves at crest and trough.
Rise rise(int n, int interp_points) {
  GasBox box({n, static_cast<int>(kHeight / kWave * 2 * n), 4}, kWave / 2 / n, kClosed);
  box.run.params.interp_points = interp_points;
  box.run.params.max_cycles = 20;
  box.set_buoyancy(kTemperature, kPush);
  constexpr double kStart = 0.02;
  box.set_channel(kTemperature, [&](const Vec3d& x) {
    const double depth = kLayer + kStart * std::cos(2 * kPi * x[0] / kWave) - x[1];
    return std::clamp(0.5 + depth / (2 * box.dx()), 0.0, 1.0);
  });
  Rise result;
  std::vector<double> times, logs, late, heights;
  for (double height = kStart; height < 1.3 * kWave && box.time < 12;) {
    const double before = height;
    box.step(box.time == 0 ? 0.02 : std::min(0.02, 0.5 * box.dx() / box.max_speed()));
    height = tip(box);
    result.rows.push_back({box.time, height});
    if (before > 0.03 && height < 0.08) {
      times.push_back(box.time);
      logs.push_back(std::log(height));
    }
    if (height > 0.3 * kWave && height < 0.8 * kWave) {
      late.push_back(box.time);
      heights.push_back(height);
    }
  }
  result.growth = fit_line(times, logs).slope;
  result.speed = fit_line(late, heights).slope;
  return result;
}

}  // namespace

// Rayleigh and Taylor: rate^2 = A g k, and A g is half the buoyancy. Goncharov 2002: the bubble
// rises with sqrt(2 A g / (1 + A) / (3 k)), here for small A. Curves: time, height of the tip.
Result bubble(Effort effort) {
  const double k = 2 * kPi / kWave;
  Result result;
  result.columns = {"time", "height"};
  for (const int n : {32, 64}) {
    if (effort == Effort::kQuick && n > 32) break;
    for (const int points : {3, 4}) {
      const Rise found = rise(n, points);
      const std::string name = std::string(points == 4 ? "cubic, " : "linear, ") +
                               std::to_string(2 * n) + " cells a wave: ";
      result.figures.push_back({name + "growth", found.growth, std::sqrt(kPush * k / 2)});
      result.figures.push_back({name + "speed", found.speed, std::sqrt(kPush / (3 * k))});
      result.rows = found.rows;
    }
  }
  return result;
}

}  // namespace nbx::physics
