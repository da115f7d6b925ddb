// A ball that starts to move through gas at rest, and a ball at rest in a wind of the same speed.
// Seen from the gas far away both are the same flow, so they must give the gas the same energy.
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"
#include "bench/physics/gas_box.h"

namespace nbx::physics {

namespace {

constexpr double kSpeed = 1, kRadius = 6;  // m/s, cells
const Vec3i kCells(64, 36, 36);

// A ball with its center at x, in cells of the box, that moves with `speed` along x.
Solids ball_at(const Domain& domain, double x, double speed) {
  const auto field = [](const Vec3i& dims, auto value) {
    auto made = std::make_shared<MField>(kCpu, dims);
    Field<float>& f = made->write_cpu();
    for (int k = 0; k < f.nz(); ++k)
      for (int j = 0; j < f.ny(); ++j)
        for (int i = 0; i < f.nx(); ++i) f(i, j, k) = static_cast<float>(value(i, j, k));
    return made;
  };
  const auto distance = [&](int i, int j, int k) {
    const Vec3d from(i - 0.5 - x, j - 0.5 - 0.5 * kCells[1], k - 0.5 - 0.5 * kCells[2]);
    const double d = length(from) - kRadius;
    return d * std::abs(d);
  };
  const auto still = [](int, int, int) { return 0.0; };
  return {field(domain.center_dims(), distance),
          field(domain.face_dims(0), [speed](int, int, int) { return speed; }),
          field(domain.face_dims(1), still), field(domain.face_dims(2), still)};
}

// The energy of the gas within three radii of the ball along x, over rho U^2 R^3 / 2, in the frame
// in which the gas far away rests.
double energy(GasBox& box, double x, double wind) {
  const double reach = 3 * kRadius;
  double sum = 0;
  for_cells(kCells, [&](int i, int j, int k) {
    const Vec3d from(i - 0.5 - x, j - 0.5 - 0.5 * kCells[1], k - 0.5 - 0.5 * kCells[2]);
    if (std::abs(from[0]) > reach || length(from) < kRadius) return;
    const auto mean = [&](int axis) {
      const Field<float>& f = box.velocity(axis);
      return 0.5 * (double(f(i, j, k)) + f(i + (axis == 0), j + (axis == 1), k + (axis == 2)));
    };
    const double u = mean(0) - wind, v = mean(1), w = mean(2);
    sum += u * u + v * v + w * w;
  });
  return sum / std::pow(kRadius, 3) / (kSpeed * kSpeed);
}

// The energies after each step of half a cell, until the ball went four radii.
std::vector<double> energies(bool moves, int interp_points) {
  GasBox box(kCells, 1.0 / 32, {});
  box.run.params.interp_points = interp_points;
  box.run.params.solid_iterations = 30;
  const double wind = moves ? 0 : -kSpeed;
  if (!moves) box.setup.wind = {{-1, 0, 0}, kSpeed};
  const auto place = [&](double time) {
    return moves ? 20 + kSpeed * time / box.dx() : 0.5 * kCells[0];
  };
  box.solids = [&](const Domain& domain, double time) {
    return ball_at(domain, place(time), moves ? kSpeed : 0);
  };
  std::vector<double> found;
  while (kSpeed * box.time < 4 * kRadius * box.dx()) {
    box.step(0.5 * box.dx() / kSpeed);
    found.push_back(energy(box, place(box.time), wind));
  }
  return found;
}

}  // namespace

// Just after the start the flow is a potential flow: its energy is that of half the ball's volume
// of gas, (2 pi / 3) in these units (Lamb 1932). Curves: path in radii, energies.
Result ball(Effort effort) {
  const std::vector<double> moving = energies(true, 3), wind = energies(false, 3);
  Result result;
  result.columns = {"path", "ball moves", "wind blows"};
  double apart = 0, sum = 0;
  for (std::size_t i = 0; i < moving.size(); ++i) {
    result.rows.push_back({0.5 * static_cast<double>(i + 1) / kRadius, moving[i], wind[i]});
    apart += std::abs(moving[i] - wind[i]);
    sum += moving[i];
  }
  const double potential = 2 * std::numbers::pi / 3;
  result.figures = {
      {"energy after the first step, ball moves", moving.front(), potential},
      {"energy after the first step, wind blows", wind.front(), potential},
      {"energy after four radii, wind over ball", wind.back() / moving.back(), 1},
      {"mean difference of the two", apart / sum, 0},
  };
  if (effort == Effort::kFull)
    result.figures.push_back({"energy after four radii, wind over ball, cubic",
                              energies(false, 4).back() / energies(true, 4).back(), 1});
  return result;
}

}  // namespace nbx::physics
