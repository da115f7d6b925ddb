// Small fixed vectors: dimensions and offsets (int), positions (float), directions (double).
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

namespace nbx {

template <class T, int N>
struct VectorT {
  std::array<T, N> v{};

  constexpr VectorT() = default;
  template <class... A>
  requires(sizeof...(A) == N) constexpr VectorT(A... a) : v{static_cast<T>(a)...} {}

  constexpr T& operator[](int i) { return v[i]; }
  constexpr const T& operator[](int i) const { return v[i]; }
  constexpr bool operator==(const VectorT&) const = default;

  constexpr VectorT& operator+=(const VectorT& b) { return *this = *this + b; }
  constexpr VectorT& operator-=(const VectorT& b) { return *this = *this - b; }
  constexpr VectorT& operator*=(T s) { return *this = *this * s; }

  friend constexpr VectorT operator+(VectorT a, const VectorT& b) {
    for (int i = 0; i < N; ++i) a[i] += b[i];
    return a;
  }
  friend constexpr VectorT operator-(VectorT a, const VectorT& b) {
    for (int i = 0; i < N; ++i) a[i] -= b[i];
    return a;
  }
  friend constexpr VectorT operator-(VectorT a) {
    for (int i = 0; i < N; ++i) a[i] = -a[i];
    return a;
  }
  friend constexpr VectorT operator*(VectorT a, T s) {
    for (int i = 0; i < N; ++i) a[i] *= s;
    return a;
  }
  friend constexpr VectorT operator*(T s, const VectorT& a) { return a * s; }
};

template <class T, int N>
constexpr T dot(const VectorT<T, N>& a, const VectorT<T, N>& b) {
  T sum = 0;
  for (int i = 0; i < N; ++i) sum += a[i] * b[i];
  return sum;
}

template <class T>
constexpr VectorT<T, 3> cross(const VectorT<T, 3>& a, const VectorT<T, 3>& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

template <class T, int N>
T length(const VectorT<T, N>& a) {
  return std::sqrt(dot(a, a));
}

/// `a` scaled to length 1; unchanged if its squared length is at most 1e-20.
template <class T, int N>
VectorT<T, N> normalized(const VectorT<T, N>& a) {
  const T square = dot(a, a);
  return square > T(1e-20) ? a * (T(1) / std::sqrt(square)) : a;
}

template <class To, class From, int N>
constexpr VectorT<To, N> vector_cast(const VectorT<From, N>& a) {
  VectorT<To, N> b;
  for (int i = 0; i < N; ++i) b[i] = static_cast<To>(a[i]);
  return b;
}

using Vec3i = VectorT<int, 3>;
using Vec3f = VectorT<float, 3>;
using Vec3d = VectorT<double, 3>;

}  // namespace nbx
