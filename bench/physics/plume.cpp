// A cloud and a steady plume of hot gas, against the laws of similarity (Morton, Taylor and Turner
// 1956; Turner 1962 for the front): far from the source only its buoyancy counts. For a cloud that
// makes z ~ t^(1/2), for the front of a plume z ~ t^(3/4); widths grow in proportion to z.
//
// z counts from a virtual origin, where the width would be 0.
#include <algorithm>
#include <cmath>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr Faces kFloor{0, 0, 1, 0, 0, 0};
// Off the middle, so that the flow has no symmetry to keep.
constexpr double kX = 0.507, kZ = 0.496;

struct Air : GasBox {
  // A box of 1 x 2 x 1 m, open but for its floor.
  explicit Air(int n) : GasBox({n, 2 * n, n}, 1.0 / n, kFloor) {
    run.params.simulated_channels = {kTemperature};
    set_buoyancy(kTemperature, 1);
  }
  void advance() { time == 0 ? step(0.01) : step(std::min(0.05, dx() / max_speed())); }
};

// The exponent p of z ~ t^p between two heights.
double rise_exponent(const std::vector<double>& times, const std::vector<double>& heights,
                     double origin, double low, double high) {
  std::vector<double> t, z;
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (heights[i] < low || heights[i] > high) continue;
    t.push_back(times[i]);
    z.push_back(heights[i] - origin);
  }
  return fit_exponent(t, z);
}

struct Cloud {
  double height = 0, radius = 0, heat = 0;
};

Cloud find_cloud(Air& air) {
  const Field<float>& t = air.channel(kTemperature);
  Cloud cloud;
  Vec3d mean;
  double square = 0;
  for_cells(air.cells(), [&](int i, int j, int k) {
    const Vec3d x = air.center(i, j, k);
    const double heat = t(i, j, k);
    cloud.heat += heat;
    mean += x * heat;
    square += heat * (x[0] * x[0] + x[2] * x[2]);
  });
  mean *= 1 / cloud.heat;
  cloud.height = mean[1];
  cloud.radius = std::sqrt(square / cloud.heat - mean[0] * mean[0] - mean[2] * mean[2]);
  return cloud;
}

// The height below which 95 % of the heat is.
double find_front(Air& air) {
  const Field<float>& t = air.channel(kTemperature);
  std::vector<double> layers(air.cells()[1] + 1);
  double all = 0, below = 0;
  for_cells(air.cells(), [&](int i, int j, int k) { layers[j] += t(i, j, k); });
  for (const double heat : layers) all += heat;
  for (std::size_t j = 1; j < layers.size(); ++j) {
    const double next = below + layers[j];
    if (next >= 0.95 * all) return (j - 1 + (0.95 * all - below) / layers[j]) * air.dx();
    below = next;
  }
  return 2;
}

// Means over time of a layer: width of the temperature, and what is in its middle.
struct Profile {
  std::vector<double> z, width, speed, temperature;
};

Profile mean_profile(const Field<float>& t, const Field<float>& w, const Air& air, double low,
                     double high) {
  const Vec3i n = air.cells();
  Profile profile;
  for (int j = 1; j <= n[1]; ++j) {
    const double z = (j - 0.5) * air.dx();
    if (z < low || z > high) continue;
    double sum = 0, squares = 0, speed = 0;
    for (int k = 1; k <= n[2]; ++k)
      for (int i = 1; i <= n[0]; ++i) {
        const double heat = t(i, j, k);
        sum += heat;
        squares += heat * heat;
        speed += heat * w(i, j, k);
      }
    profile.z.push_back(z);
    // A disc of even temperature has the radius sqrt(area / pi).
    profile.width.push_back(std::sqrt(sum * sum / squares / 3.14159265) * air.dx());
    profile.speed.push_back(speed / sum);
    profile.temperature.push_back(squares / sum);
  }
  return profile;
}

}  // namespace

// Curves: time, height, radius, heat.
Result thermal(Effort effort) {
  Air air(effort == Effort::kFull ? 48 : 32);
  constexpr double kBall = 0.12, kY = 0.2;
  air.set_channel(kTemperature,
                  [](const Vec3d& x) { return length(x - Vec3d(kX, kY, kZ)) < kBall ? 1 : 0; });
  Result result;
  result.columns = {"time", "height", "radius", "heat"};
  std::vector<double> times, heights, z, radii;
  const double heat = find_cloud(air).heat;
  for (Cloud cloud; cloud.height < 1.2 && air.time < 8;) {
    air.advance();
    cloud = find_cloud(air);
    result.rows.push_back({air.time, cloud.height, cloud.radius, cloud.heat / heat});
    times.push_back(air.time);
    heights.push_back(cloud.height);
    if (cloud.height < 0.45) continue;
    z.push_back(cloud.height);
    radii.push_back(cloud.radius);
  }
  const Line width = fit_line(z, radii);
  const double origin = -width.intercept / width.slope;
  for (double& height : z) height -= origin;
  result.figures = {
      {"exponent of the height over time", rise_exponent(times, heights, origin, 0.45, 1.2), 0.5},
      {"exponent of the radius over the height", fit_exponent(z, radii), 1},
      {"growth of the radius with the height", width.slope},
      {"virtual origin", origin},
      {"heat at the end", result.rows.back()[3], 1},
  };
  return result;
}

// Curves: height, width, speed and temperature of the mean plume; then time and height of the
// front.
Result plume(Effort effort) {
  Air air(effort == Effort::kFull ? 40 : 24);
  constexpr double kSource = 0.06;
  const Weights weights = weights_where(air.cells(), [&](const Vec3i& at) {
    const Vec3d x = air.center(at[0] + 1, at[1] + 1, at[2] + 1);
    return at[1] < 2 && std::hypot(x[0] - kX, x[2] - kZ) < kSource;
  });
  SimulationObjectParameters hot;
  hot.amounts = {{kTemperature, 1}};
  air.sources = [&](StepSources& given) { given.add_source_object(hot, *weights); };

  std::vector<double> times, heights;
  while ((heights.empty() || heights.back() < 1.7) && air.time < 12) {
    air.advance();
    times.push_back(air.time);
    heights.push_back(find_front(air));
  }
  Field<float> temperature, speed;
  const double settled = air.time;
  int count = 0;
  for (; air.time < 2.5 * settled; ++count) {
    air.advance();
    const Field<float>&t = air.channel(kTemperature), &v = air.velocity(1);
    if (count == 0) temperature.copy(t), speed.copy(v);
    for (std::size_t i = 0; count > 0 && i < t.count(); ++i) temperature[i] += t[i];
    for (std::size_t i = 0; count > 0 && i < v.count(); ++i) speed[i] += v[i];
  }
  for (std::size_t i = 0; i < temperature.count(); ++i) temperature[i] /= count;
  for (std::size_t i = 0; i < speed.count(); ++i) speed[i] /= count;
  const Profile mean = mean_profile(temperature, speed, air, 0.4, 1.5);

  const Line width = fit_line(mean.z, mean.width);
  const double origin = -width.intercept / width.slope;
  std::vector<double> z = mean.z;
  for (double& height : z) height -= origin;
  Result result;
  result.columns = {"height", "width", "speed", "temperature", "front time", "front height"};
  for (std::size_t i = 0; i < std::max(z.size(), times.size()); ++i) {
    const std::size_t a = std::min(i, z.size() - 1), b = std::min(i, times.size() - 1);
    result.rows.push_back(
        {mean.z[a], mean.width[a], mean.speed[a], mean.temperature[a], times[b], heights[b]});
  }
  result.figures = {
      {"exponent of the front over time", rise_exponent(times, heights, origin, 0.4, 1.5), 0.75},
      {"exponent of the width over the height", fit_exponent(z, mean.width), 1},
      {"exponent of the speed", fit_exponent(z, mean.speed), -1.0 / 3},
      {"exponent of the temperature", fit_exponent(z, mean.temperature), -5.0 / 3},
      {"growth of the width with the height", width.slope},
      {"virtual origin", origin},
  };
  return result;
}

}  // namespace nbx::physics
