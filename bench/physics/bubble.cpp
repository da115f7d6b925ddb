// A bubble of hot gas that rises in a shaft, while cold gas falls along its walls. It comes from
// the wave on a flat layer, first with the growth rate of Rayleigh and Taylor, then at a constant
// speed.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr double kWave = 1, kPush = 1;  // length of the wave in m, buoyancy of hot gas in m/s^2
constexpr double kHeight = 2, kLayer = 0.9;
constexpr double kPi = std::numbers::pi;

// Where the temperature in the first column falls through 1/2, from above.
double tip(GasBox& box) {
  const Field<float>& t = box.channel(kTemperature);
  int j = box.cells()[1];
  while (j > 1 && t(1, j, 2) < 0.5f) --j;
  const double low = t(1, j, 2), high = t(1, j + 1, 2);
  return (j - 0.5 + (low > high ? (low - 0.5) / (low - high) : 0)) * box.dx() - kLayer;
}

// The amplitude of the wave, by the heat above each point.
double amplitude(GasBox& box) {
  const Field<float>& t = box.channel(kTemperature);
  const Vec3i n = box.cells();
  double sum = 0;
  for_cells({n[0], n[1], 1}, [&](int i, int j, int) {
    sum += t(i, j, 2) * std::cos(2 * kPi * box.center(i, j, 1)[0] / kWave);
  });
  return sum * box.dx() * 2 / n[0];
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
  const double start = amplitude(box);
  std::vector<double> times, grown, late, heights;
  // Where the tip mixes with the cold gas, its height falls.
  for (double height = 0, most = 0; height < 0.7 * kWave && height > most - 0.05 * kWave;
       most = std::max(most, height)) {
    box.step(box.time == 0 ? 0.02 : std::min(0.04, box.dx() / box.max_speed()));
    height = tip(box);
    const double wave = amplitude(box);
    result.rows.push_back({box.time, height, wave});
    // From rest the wave grows like cosh(rate t).
    if (wave > 1.5 * start && wave < 3 * start) {
      times.push_back(box.time);
      grown.push_back(std::acosh(wave / start));
    }
    if (height > 0.25 * kWave && height < 0.6 * kWave) {
      late.push_back(box.time);
      heights.push_back(height);
    }
  }
  result.growth = fit_line(times, grown).slope;
  result.speed = fit_line(late, heights).slope;
  return result;
}

}  // namespace

// Rayleigh and Taylor: rate^2 = A g k, and A g is half the buoyancy. Goncharov 2002: the bubble
// rises with sqrt(2 A g / (1 + A) / (3 k)), here for small A. Curves: time, height of the tip,
// amplitude of the wave.
Result bubble(Effort effort) {
  const double k = 2 * kPi / kWave;
  Result result;
  result.columns = {"time", "height", "wave"};
  for (const int n : {16, 32}) {
    if (effort == Effort::kQuick && n > 16) break;
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
