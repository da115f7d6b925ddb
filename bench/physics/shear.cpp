// Waves on a round shear layer: gas at rest inside of a circle, gas that turns around it. The layer
// closes on itself, so it needs no periodic box; with many waves it is the plane layer of Michalke.
#include <cmath>
#include <complex>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"
#include "math/interpolation.h"

namespace nbx::physics {

namespace {

using Complex = std::complex<double>;
constexpr double kRadius = 0.25;  // of the layer, in a box of 1 x 1
constexpr double kPi = std::numbers::pi;

// Half the thickness. A plane layer tanh(y / d) grows fastest at k d = 0.4446 (Michalke 1964).
double thickness(int waves) { return 0.4446 * kRadius / waves; }

// Vorticity sech^2: the velocity rises like a tanh, by 2 m/s.
double vorticity(double r, double d) { return std::pow(std::cosh((r - kRadius) / d), -2) / d; }

// The layer as thin rings, between which the vorticity jumps, and the waves on them:
//
//     d eta_j / dt = -i (m Omega_j eta_j - sum_k jump_k / 2 (r_k / r_j) (r_< / r_>)^m eta_k)
//
// eta is the displacement of a ring. This is the linear theory of an inviscid round flow; for one
// ring it gives Kelvin's waves on a vortex.
class RingModel {
 public:
  RingModel(int waves, double d) : m_(waves), d_(d) {
    double circulation = 0;  // over 2 pi
    for (int j = 0; j < kRings; ++j) {
      const double r = radius(j), h = spacing();
      jump_[j] = vorticity(r - h / 2, d) - vorticity(r + h / 2, d);
      circulation += vorticity(r - h / 2, d) * (r - h / 2) * h;
      turn_[j] = circulation / (r * r);
    }
    grow();
  }
  double rate() const { return rate_; }
  double speed(double r) const {
    const double at = (r - radius(0)) / spacing();
    if (at <= 0) return 0;
    if (at >= kRings - 1) return turn_[kRings - 1] * radius(kRings - 1) * radius(kRings - 1) / r;
    const int j = static_cast<int>(at);
    const double t = at - j;
    return (turn_[j] * (1 - t) + turn_[j + 1] * t) * r;
  }
  // The velocity of the fastest wave, radial and around, where the largest is about 1.
  std::array<double, 2> wave(double r, double angle) const {
    Complex stream, slope;
    for (int k = 0; k < kRings; ++k) {
      const double rk = radius(k), inside = r < rk ? 1 : -1;
      const Complex part =
          jump_[k] * eta_[k] * rk / (2.0 * m_) * power(std::min(r, rk) / std::max(r, rk));
      stream += part;
      slope += inside * m_ / r * part;
    }
    const Complex turn = std::polar(1.0, m_ * angle), i(0, 1);
    return {(i * (m_ / r) * stream * turn).real(), -(slope * turn).real()};
  }

 private:
  static constexpr int kRings = 96;
  using Waves = std::array<Complex, kRings>;

  double spacing() const { return std::min(12 * d_, 2 * kRadius) / kRings; }
  double radius(int j) const { return kRadius + (j - (kRings - 1) / 2.0) * spacing(); }
  double power(double q) const { return std::pow(q, m_); }

  // The fastest wave wins, whatever the start.
  void grow() {
    std::array<double, kRings * kRings> pull{};
    for (int j = 0; j < kRings; ++j)
      for (int k = 0; k < kRings; ++k) {
        const double a = radius(j), b = radius(k);
        pull[j * kRings + k] = (j == k ? m_ * turn_[j] : 0) -
                               jump_[k] / 2 * b / a * power(std::min(a, b) / std::max(a, b));
      }
    const auto slope = [&](const Waves& eta) {
      Waves out{};
      for (int j = 0; j < kRings; ++j) {
        Complex sum;
        for (int k = 0; k < kRings; ++k) sum += pull[j * kRings + k] * eta[k];
        out[j] = Complex(0, -1) * sum;
      }
      return out;
    };
    eta_.fill(1);
    const double dt = 0.25 * d_, span = 60 * d_;
    for (double t = 0; t < span; t += dt) {
      step(slope, dt);
      double size = 0;
      for (int j = 0; j < kRings; ++j) size += std::norm(jump_[j] * eta_[j]);
      size = std::sqrt(size);
      rate_ = std::log(size) / dt;
      for (Complex& e : eta_) e /= size;
    }
    const std::array<double, 2> there = wave(kRadius, 0), later = wave(kRadius, kPi / 2 / m_);
    const double size = std::hypot(there[0], later[0]);
    for (Complex& e : eta_) e /= size;
  }
  // Runge and Kutta's step of fourth order.
  template <class Slope>
  void step(const Slope& slope, double dt) {
    const auto plus = [](Waves a, double s, const Waves& b) {
      for (int j = 0; j < kRings; ++j) a[j] += s * b[j];
      return a;
    };
    const Waves a = slope(eta_), b = slope(plus(eta_, dt / 2, a)), c = slope(plus(eta_, dt / 2, b)),
                d = slope(plus(eta_, dt, c));
    for (int j = 0; j < kRings; ++j) eta_[j] += dt / 6 * (a[j] + 2.0 * b[j] + 2.0 * c[j] + d[j]);
  }

  int m_;
  double d_, rate_ = 0;
  std::array<double, kRings> jump_{}, turn_{};  // turn: angular velocity
  Waves eta_{};
};

// The radial velocity on the circle: the amplitude of `waves` waves.
double amplitude(GasBox& box, int waves) {
  const Field<float>&u = box.velocity(0), &v = box.velocity(1);
  constexpr int kPoints = 256;
  Complex sum;
  for (int i = 0; i < kPoints; ++i) {
    const double angle = 2 * kPi * i / kPoints;
    const double x = (0.5 + kRadius * std::cos(angle)) / box.dx();
    const double y = (0.5 + kRadius * std::sin(angle)) / box.dx();
    const auto at = [](double a) { return static_cast<float>(a); };
    const double radial = sample_linear(u, at(x + 1), at(y + 0.5), 2) * std::cos(angle) +
                          sample_linear(v, at(x + 0.5), at(y + 1), 2) * std::sin(angle);
    sum += radial * std::polar(1.0, -waves * angle);
  }
  return 2 * std::abs(sum) / kPoints;
}

}  // namespace

ShearGrowth grow_shear(int n, int waves, int interp_points) {
  const RingModel model(waves, thickness(waves));
  GasBox box({n, n, 4}, 1.0 / n, kClosed);
  box.run.params.interp_points = interp_points;
  box.run.params.pressure_tolerance = 1e-3;
  box.run.params.max_cycles = 60;
  constexpr double kStart = 0.01;
  box.set_velocity([&](const Vec3d& x) {
    const double r = std::hypot(x[0] - 0.5, x[1] - 0.5), angle = std::atan2(x[1] - 0.5, x[0] - 0.5);
    const std::array<double, 2> wave = model.wave(std::max(r, 1e-9), angle);
    const double out = kStart * wave[0], around = kStart * wave[1] + model.speed(std::max(r, 1e-9));
    return Vec3d(out * std::cos(angle) - around * std::sin(angle),
                 out * std::sin(angle) + around * std::cos(angle), 0);
  });
  ShearGrowth growth;
  growth.theory = model.rate();
  std::vector<double> times, logs;
  // The first waves count, before the numerical viscosity has widened the layer.
  box.run.params.max_cycles = 20;
  for (double size = amplitude(box, waves); size < 4 * kStart && box.time < 4 / model.rate();
       size = amplitude(box, waves)) {
    growth.rows.push_back({box.time, size, kStart * std::exp(model.rate() * box.time)});
    if (size < 2 * kStart) {
      times.push_back(box.time);
      logs.push_back(std::log(size));
    }
    box.step_cfl(1);
  }
  growth.rate = fit_line(times, logs).slope;
  return growth;
}

// Curves: time, amplitude, amplitude by theory, at the finest resolution.
Result shear(Effort effort) {
  constexpr int kWaves = 5;
  Result result;
  result.columns = {"time", "amplitude", "amplitude by theory"};
  const RingModel plane(96, thickness(96));
  result.figures.push_back(
      {"theory for 96 waves: rate times thickness", plane.rate() * thickness(96), 0.1897});
  for (const int n : {64, 128, 192}) {
    if (effort == Effort::kQuick && n > 128) break;
    for (const int points : {3, 4}) {
      const ShearGrowth growth = grow_shear(n, kWaves, points);
      result.figures.push_back({std::string(points == 4 ? "cubic" : "linear") + ", thickness of " +
                                    std::to_string(thickness(kWaves) * n).substr(0, 3) + " cells",
                                growth.rate, growth.theory});
      result.rows = growth.rows;
    }
  }
  return result;
}

}  // namespace nbx::physics
