// Points, directions and matrices in the host's space.
//
// The space is left-handed: x right, y up, z away from the viewer. One unit is 0.01 m. The outer
// side of a polygon is the one that (b - a) x (c - a) points to, with the usual formula of the
// cross product. Seen from outside, its corners run clockwise.
#pragma once

#include <cmath>

namespace host {

struct Vector {
  double x = 0, y = 0, z = 0;

  friend bool operator==(const Vector&, const Vector&) = default;
  friend Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend Vector operator*(const Vector& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
};

inline double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Length(const Vector& a) { return std::sqrt(Dot(a, a)); }
inline bool IsFinite(const Vector& a) {
  return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

/// An affine map, given by the images of the three axes and of the origin. A point p maps to
///     off + v1 p.x + v2 p.y + v3 p.z.
struct Matrix {
  Vector off;
  Vector v1{1, 0, 0}, v2{0, 1, 0}, v3{0, 0, 1};

  friend bool operator==(const Matrix&, const Matrix&) = default;

  /// The image of a direction: without the offset.
  Vector Turn(const Vector& d) const { return v1 * d.x + v2 * d.y + v3 * d.z; }

  /// The image of a point.
  friend Vector operator*(const Matrix& m, const Vector& p) { return m.off + m.Turn(p); }

  /// First b, then a.
  friend Matrix operator*(const Matrix& a, const Matrix& b) {
    return {a * b.off, a.Turn(b.v1), a.Turn(b.v2), a.Turn(b.v3)};
  }
};

inline double Determinant(const Matrix& m) { return Dot(m.v1, Cross(m.v2, m.v3)); }

}  // namespace host
