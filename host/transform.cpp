#include "host/transform.h"

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

}  // namespace host
