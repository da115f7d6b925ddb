#include "cache/frame_time.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace nbx {

namespace {

constexpr double kTiny = 1e-6;              // magnitudes below it count as 0
constexpr double kExact = 4294967295.0;     // the integer algorithm is used below it
constexpr double kLargestMagnitude = 1e18;  // of the floating algorithm

std::int64_t truncated(double v) { return static_cast<std::int64_t>(v); }

// Euclid's algorithm with floating remainders; a number within 0.5 of 0 ends it, and so does a NaN.
double floating_gcd(double a, double b) {
  for (double r = std::fmod(a, b); r >= 0.5; r = std::fmod(a, b)) a = std::exchange(b, r);
  return b;
}

__extension__ typedef __int128 Wide;   // holds the sum of two products of whole terms
constexpr double kMostWhole = 0x1p53;  // a double holds every whole number up to it

/// Whether both are whole numbers and the denominator is above 0, as in clocks and rates.
bool is_whole(const Fraction& f) {
  const auto whole = [](double v) { return std::abs(v) <= kMostWhole && std::trunc(v) == v; };
  return whole(f.num) && whole(f.den) && f.den > 0;
}

Wide wide(double whole) { return static_cast<Wide>(whole); }

/// num / den in lowest terms. Empty if doubles can't hold these.
std::optional<Fraction> lowest_terms(Wide num, Wide den) {
  Wide a = num < 0 ? -num : num, b = den;
  while (b != 0) a = std::exchange(b, a % b);
  const Fraction f{static_cast<double>(num / a), static_cast<double>(den / a)};
  return is_whole(f) ? std::optional(f) : std::nullopt;
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
  // Magnitudes beyond the limit aren't kept: both parts become equal.
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
  if (is_whole(a) && is_whole(b))
    if (const auto sum = lowest_terms(wide(a.num) * wide(b.den) + wide(b.num) * wide(a.den),
                                      wide(a.den) * wide(b.den)))
      return *sum;
  // a/c + b/c keeps the denominator, so that a clock's terms don't grow from frame to frame.
  if (a.den == b.den) return normalize({a.num + b.num, a.den});
  return normalize({a.num * b.den + b.num * a.den, a.den * b.den});
}

Fraction operator*(const Fraction& a, const Fraction& b) {
  if (is_whole(a) && is_whole(b))
    if (const auto product = lowest_terms(wide(a.num) * wide(b.num), wide(a.den) * wide(b.den)))
      return *product;
  return normalize({a.num * b.num, a.den * b.den});
}

bool fraction_less(const Fraction& a, const Fraction& b) {
  if (a.den == b.den) return a.num < b.num;
  if (is_whole(a) && is_whole(b)) return wide(a.num) * wide(b.den) < wide(b.num) * wide(a.den);
  return std::floor(a.num * b.den) < std::floor(b.num * a.den);
}

int FrameTime::frame() const {
  if (is_whole(time) && is_whole(length) && length.num > 0) {
    const Wide n = wide(time.num) * wide(length.den), d = wide(time.den) * wide(length.num);
    const Wide number = n / d - (n % d < 0 ? 1 : 0);
    return static_cast<int>(
        std::clamp<Wide>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
  }
  const Fraction f = normalize({time.num * length.den, time.den * length.num});
  const double number = std::floor(f.den == 0 ? f.num : f.value());
  // Times from a file may be anything.
  if (std::isnan(number)) return 0;
  constexpr double lowest = std::numeric_limits<int>::min();
  constexpr double highest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(number, lowest, highest));
}

double FrameTime::frames_per_second() const {
  const double seconds = length.value();
  return seconds > 0 ? length.den / length.num : 0;
}

FrameTime next_frame(const FrameTime& time) { return {time.time + time.length, time.length}; }

}  // namespace nbx
