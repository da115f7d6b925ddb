// Affine transforms, rows of a 3 x 4 matrix applied to column vectors: q = A p + t.
#pragma once

#include "math/vector.h"

namespace nbx {

template <class T, int N>
struct AffineTransformT {
  std::array<VectorT<T, N>, N> rows{};  // A
  VectorT<T, N> translation{};          // t

  static constexpr AffineTransformT identity() {
    AffineTransformT m;
    for (int i = 0; i < N; ++i) m.rows[i][i] = 1;
    return m;
  }

  constexpr bool operator==(const AffineTransformT&) const = default;

  constexpr VectorT<T, N> linear(const VectorT<T, N>& p) const {
    VectorT<T, N> q;
    for (int i = 0; i < N; ++i) q[i] = dot(rows[i], p);
    return q;
  }
  constexpr VectorT<T, N> operator()(const VectorT<T, N>& p) const {
    return linear(p) + translation;
  }

  /// The transform that first applies `b`.
  friend constexpr AffineTransformT operator*(const AffineTransformT& a,
                                              const AffineTransformT& b) {
    AffineTransformT c;
    for (std::size_t i = 0; i < N; ++i)
      for (int j = 0; j < N; ++j)
        for (int k = 0; k < N; ++k) c.rows[i][j] += a.rows[i][k] * b.rows[k][j];
    c.translation = a(b.translation);
    return c;
  }
};

/// The inverse by cofactors. A singular matrix gives the zero transform.
template <class T>
AffineTransformT<T, 3> inverse(const AffineTransformT<T, 3>& m) {
  const auto& [a, b, c] = m.rows;
  const VectorT<T, 3> bc = cross(b, c), ca = cross(c, a), ab = cross(a, b);
  const T det = dot(a, bc);
  AffineTransformT<T, 3> inv;
  if (det == T(0)) return inv;
  for (int i = 0; i < 3; ++i) inv.rows[i] = VectorT<T, 3>(bc[i], ca[i], ab[i]) * (T(1) / det);
  inv.translation = -inv.linear(m.translation);
  return inv;
}

using Affine3d = AffineTransformT<double, 3>;

}  // namespace nbx
