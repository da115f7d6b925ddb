// Colors (three components in linear light) and directions of the renderer.
#pragma once

#include <algorithm>
#include <cmath>

#include "host/base/srgb.h"
#include "host/interface/vector.h"

namespace host {

inline constexpr double kPi = 3.14159265358979323846;

/// Componentwise.
inline Vector Times(const Vector& a, const Vector& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vector Mix(const Vector& a, const Vector& b, double share) {
  return a * (1 - share) + b * share;
}
inline double Mean(const Vector& c) { return (c.x + c.y + c.z) / 3; }
inline double Largest(const Vector& c) { return std::max({c.x, c.y, c.z}); }
inline bool IsBlack(const Vector& c) { return Largest(c) <= 0; }

/// The vector with unit length. Zero stays zero.
inline Vector Normalized(const Vector& v) {
  const double length = Length(v);
  return length > 0 ? v * (1 / length) : Vector{};
}

/// Two axes perpendicular to n and to each other. After T. Duff et al., Building an orthonormal
/// basis, revisited, JCGT 6(1), 2017.
struct Basis {
  explicit Basis(const Vector& normal) : n(normal) {
    const double sign = std::copysign(1.0, n.z);
    const double a = -1 / (sign + n.z), b = n.x * n.y * a;
    t = {1 + sign * n.x * n.x * a, sign * b, -sign * n.x};
    s = {b, sign + n.y * n.y * a, -n.y};
  }
  Vector ToWorld(const Vector& v) const { return t * v.x + s * v.y + n * v.z; }
  Vector ToLocal(const Vector& v) const { return {Dot(v, t), Dot(v, s), Dot(v, n)}; }
  Vector t, s, n;
};

/// An area-preserving map from the unit square to the unit disk: P. Shirley and K. Chiu, A low
/// distortion map between disk and square, JGT 2(3), 1997.
inline Vector OnDisk(double u, double v) {
  const double a = 2 * u - 1, b = 2 * v - 1;
  if (a == 0 && b == 0) return {};
  const bool wide = std::abs(a) > std::abs(b);
  const double r = wide ? a : b;
  const double angle = wide ? kPi / 4 * (b / a) : kPi / 2 - kPi / 4 * (a / b);
  return {r * std::cos(angle), r * std::sin(angle), 0};
}

/// A cosine-distributed direction about +z.
inline Vector CosineDirection(double u, double v) {
  const Vector d = OnDisk(u, v);
  return {d.x, d.y, std::sqrt(std::max(0.0, 1 - d.x * d.x - d.y * d.y))};
}

inline Vector FromSrgb(const Vector& c) { return {FromSrgb(c.x), FromSrgb(c.y), FromSrgb(c.z)}; }

}  // namespace host
