#include "host/scene/transform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace host {
namespace {

struct Angle {
  double cos, sin;
};

Angle FromDegrees(double degrees) {
  const double quarter = degrees / 90;
  if (quarter == std::floor(quarter)) {
    const double turn = std::fmod(quarter, 4);
    const int q = static_cast<int>(turn < 0 ? turn + 4 : turn);
    return {q == 0 ? 1.0 : q == 2 ? -1.0 : 0.0, q == 1 ? 1.0 : q == 3 ? -1.0 : 0.0};
  }
  const double radians = degrees * std::numbers::pi / 180;
  return {std::cos(radians), std::sin(radians)};
}

}  // namespace

Matrix ToMatrix(const Transform& transform) {
  const Angle h = FromDegrees(transform.rotation.x);
  const Angle p = FromDegrees(transform.rotation.y);
  const Angle b = FromDegrees(transform.rotation.z);
  const Matrix heading{{}, {h.cos, 0, -h.sin}, {0, 1, 0}, {h.sin, 0, h.cos}};
  const Matrix pitch{{}, {1, 0, 0}, {0, p.cos, p.sin}, {0, -p.sin, p.cos}};
  const Matrix bank{{}, {b.cos, b.sin, 0}, {-b.sin, b.cos, 0}, {0, 0, 1}};

  Matrix m = heading * pitch * bank;
  m.v1 = m.v1 * transform.scale.x;
  m.v2 = m.v2 * transform.scale.y;
  m.v3 = m.v3 * transform.scale.z;
  m.off = transform.position;
  return m;
}

namespace {

double Nearest(double degrees, double former) {
  return degrees + 360 * std::round((former - degrees) / 360);
}

Vector Nearest(const Vector& angles, const Vector& former) {
  return {Nearest(angles.x, former.x), Nearest(angles.y, former.y), Nearest(angles.z, former.z)};
}

}  // namespace

Transform ToTransform(const Matrix& matrix, const Vector& former, double& shear) {
  const auto length = [](const Vector& axis) { return std::max(Length(axis), 1e-6); };
  Transform t;
  t.position = matrix.off + Vector{};  // turns -0 into 0
  t.scale = {length(matrix.v1), length(matrix.v2), length(matrix.v3)};
  if (Determinant(matrix) < 0) t.scale.x = -t.scale.x;
  const Vector x = matrix.v1 * (1 / t.scale.x), y = matrix.v2 * (1 / t.scale.y),
               z = matrix.v3 * (1 / t.scale.z);
  shear = std::max({std::fabs(Dot(x, y)), std::fabs(Dot(y, z)), std::fabs(Dot(z, x))});

  // z = (sin h cos p, -sin p, cos h cos p). The y components of x and y are cos p sin b and cos p
  // cos b. If z points straight up or down, heading and bank rotate about the same axis, and bank
  // is set to 0.
  const double degree = 180 / std::numbers::pi;
  const double pitch = std::atan2(-z.y, std::hypot(z.x, z.z));
  const bool steep = std::hypot(z.x, z.z) < 1e-7;
  const double heading = steep ? std::atan2(-x.z, x.x) : std::atan2(z.x, z.z);
  const double bank = steep ? 0 : std::atan2(x.y, y.y);
  const Vector angles = Vector{heading, pitch, bank} * degree;
  const Vector one = Nearest(angles, former);
  const Vector other = Nearest({angles.x + 180, 180 - angles.y, angles.z + 180}, former);
  t.rotation = (Length(one - former) <= Length(other - former) ? one : other) + Vector{};
  return t;
}

}  // namespace host
