#include "simulation/upres/distortion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace nbx {

namespace {

/// The largest and the smallest magnitude of three eigenvalues.
struct Magnitudes {
  double largest, smallest;
};

Magnitudes magnitudes(double x, double y, double z) {
  x = std::abs(x), y = std::abs(y), z = std::abs(z);
  return {std::max({x, y, z}), std::min({x, y, z})};
}

// The roots of the characteristic polynomial x^3 + a x^2 + b x + c, by Cardano, or by Viete where
// all three are real:
//
//     q = (a^2 - 3b) / 9,  r = (2a^3 - 9ab + 27c) / 54
Magnitudes eigenvalues(const Jacobian& J) {
  const auto minor = [&J](int i, int j) { return J[i][i] * J[j][j] - J[i][j] * J[j][i]; };
  const double a = -(J[0][0] + J[1][1] + J[2][2]);
  const double b = minor(0, 1) + minor(0, 2) + minor(1, 2);
  const double c = -(J[0][0] * minor(1, 2) - J[0][1] * (J[1][0] * J[2][2] - J[1][2] * J[2][0]) +
                     J[0][2] * (J[1][0] * J[2][1] - J[1][1] * J[2][0]));
  const double q = (a * a - 3 * b) / 9, r = (2 * a * a * a - 9 * a * b + 27 * c) / 54;
  const double d = r * r - q * q * q, middle = a / 3;
  if (d < 0) {
    const double angle = std::acos(std::clamp(r / std::sqrt(q * q * q), -1.0, 1.0));
    const auto root = [&](int n) {
      return -2 * std::sqrt(q) * std::cos((angle + 2 * std::numbers::pi * n) / 3) - middle;
    };
    return magnitudes(root(0), root(1), root(2));
  }
  // One real root A + B and a complex pair.
  const double A = -std::copysign(std::cbrt(std::abs(r) + std::sqrt(d)), r);
  const double B = A != 0 ? q / A : 0;
  const double pair = std::hypot((A + B) / 2 + middle, std::sqrt(3.0) / 2 * (A - B));
  return magnitudes(A + B - middle, pair, pair);
}

/// The forward difference wins a tie, then the central one.
double smallest(float before, float here, float after) {
  const double forward = double{after} - here, backward = double{here} - before;
  const double central = (double{after} - before) / 2;
  double least = forward;
  if (std::abs(central) < std::abs(least)) least = central;
  if (std::abs(backward) < std::abs(least)) least = backward;
  return least;
}

}  // namespace

double distortion(const Jacobian& J) {
  const auto [m1, m3] = eigenvalues(J);
  if (m1 < 0.001) return 10;
  return std::max(m1, 1 / m3);
}

Jacobian smallest_differences(const std::array<const Field<float>*, 3>& map, std::size_t cell) {
  Jacobian J;
  for (int row = 0; row < 3; ++row) {
    const Field<float>& f = *map[row];
    const std::size_t step[3] = {1, std::size_t(f.nx()), std::size_t(f.nx()) * f.ny()};
    for (int axis = 0; axis < 3; ++axis)
      J[row][axis] = smallest(f[cell - step[axis]], f[cell], f[cell + step[axis]]);
  }
  return J;
}

}  // namespace nbx
