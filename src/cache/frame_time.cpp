#include "cache/frame_time.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace nbx {

namespace {

constexpr double kTiny = 1e-6;              // magnitudes below it count as 0
constexpr double kExact = 4294967295.0;     // below it the integer algorithm is used
constexpr double kLargestMagnitude = 1e18;  // what the floating algorithm keeps

std::int64_t truncated(double v) { return static_cast<std::int64_t>(v); }

// Euclid's algorithm with floating remainders; numbers within 0.5 of 0 end it, and so does a NaN.
double floating_gcd(double a, double b) {
  for (double r = std::fmod(a, b); r >= 0.5; r = std::fmod(a, b)) a = std::exchange(b, r);
  return b;
}

}  // namespace

Fraction normalize(Fraction f) {
  if (f.den == 0 || std::isinf(f.num) || std::isnan(f.num) || !std::isfinite(f.den)) return f;
  if (f.den < 0) f = {-f.num, -f.den};
  if (std::abs(f.num) < kTiny) return {0, 1};
  if (f.den < kTiny) return {1, 0};

  double num = std::abs(f.num), den = f.den;
  if (num < kExact && den < kExact) {
    // 0.5 / 0.5 has no integer part to divide by.
    const std::int64_t g = std::max<std::int64_t>(std::gcd(truncated(num), truncated(den)), 1);
    return {f.num / static_cast<double>(g), f.den / static_cast<double>(g)};
  }
  // Magnitudes beyond the limit aren't kept: what is left is a fraction of equal parts.
  const double s = kLargestMagnitude / std::max(num, den);
  if (s < 1) {
    num *= s;
    den *= s;
    f = {1, 1};
  }
  const double g = floating_gcd(num, den);
  return {f.num / g, f.den / g};
}

Fraction operator+(const Fraction& a, const Fraction& b) {
  // a/c + b/c keeps its denominator, so that a clock's terms don't grow from frame to frame.
  if (a.den == b.den) return normalize({a.num + b.num, a.den});
  return normalize({a.num * b.den + b.num * a.den, a.den * b.den});
}

Fraction operator*(const Fraction& a, const Fraction& b) {
  return normalize({a.num * b.num, a.den * b.den});
}

bool fraction_less(const Fraction& a, const Fraction& b) {
  if (a.den == b.den) return a.num < b.num;
  return std::floor(a.num * b.den) < std::floor(b.num * a.den);
}

int FrameTime::frame() const {
  const Fraction f = normalize({time.num * length.den, time.den * length.num});
  const double number = std::floor(f.den == 0 ? f.num : f.value());
  // Times from a file may be anything.
  if (std::isnan(number)) return 0;
  constexpr double lowest = std::numeric_limits<int>::min();
  constexpr double highest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(number, lowest, highest));
}

FrameTime next_frame(const FrameTime& time) { return {time.time + time.length, time.length}; }

}  // namespace nbx
