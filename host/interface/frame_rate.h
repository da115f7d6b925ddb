// Frame rates: fractions of integers. 29.97 means 30000/1001, so frames and times agree however
// long a scene is.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>

namespace host {

/// Frames per second, in lowest terms. Integers convert implicitly.
class FrameRate {
 public:
  static constexpr double kLowest = 0.001, kHighest = 10000;

  constexpr FrameRate(std::int32_t whole = 25) : numerator_(whole) {}
  /// Both above 0.
  constexpr FrameRate(std::int64_t numerator, std::int64_t denominator)
      : numerator_(numerator / std::gcd(numerator, denominator)),
        denominator_(denominator / std::gcd(numerator, denominator)) {}

  /// The rate that people mean by a decimal number: an integer; the exact video rate for 23.976,
  /// 29.97, 59.94 and similar (a multiple of 24 or 30, times 1000/1001); otherwise the simplest
  /// fraction. Out of bounds it returns nothing, and `error` is set to words that follow the
  /// number.
  static std::optional<FrameRate> FromReal(double real, std::string& error);
  /// "25", "29.97" as FromReal, or "30000/1001".
  static std::optional<FrameRate> Parse(const std::string& text, std::string& error);

  constexpr std::int64_t Numerator() const { return numerator_; }
  constexpr std::int64_t Denominator() const { return denominator_; }
  constexpr bool IsWhole() const { return denominator_ == 1; }
  constexpr double Value() const {
    return static_cast<double>(numerator_) / static_cast<double>(denominator_);
  }
  /// "25" or "30000/1001".
  std::string Text() const {
    return std::to_string(numerator_) + (IsWhole() ? "" : "/" + std::to_string(denominator_));
  }
  friend constexpr bool operator==(const FrameRate&, const FrameRate&) = default;

 private:
  static constexpr std::int64_t kMostNumerator = 1'000'000'000, kMostDenominator = 1'000'000;

  static FrameRate Simplest(double real);

  std::int64_t numerator_;
  std::int64_t denominator_ = 1;
};

inline std::optional<FrameRate> FrameRate::FromReal(double real, std::string& error) {
  error.clear();
  if (std::isnan(real)) error = "isn't a number";
  if (real < kLowest) error = "is below 0.001";
  if (real > kHighest) error = "is above 10000";
  if (!error.empty()) return {};
  const double whole = std::round(real);
  if (whole > 0 && std::abs(real - whole) < 1e-6) return static_cast<std::int32_t>(whole);
  const double nominal = std::round(real * 1.001);  // people also write 23.98 for 23.976
  const bool of_video = std::fmod(nominal, 24) == 0 || std::fmod(nominal, 30) == 0;
  if (nominal > 0 && of_video && std::abs(real - nominal / 1.001) < 0.005)
    return FrameRate(static_cast<std::int64_t>(nominal) * 1000, 1001);
  return Simplest(real);
}

/// The first convergent of the continued fraction that equals `real` in double precision.
inline FrameRate FrameRate::Simplest(double real) {
  std::int64_t p = 1, q = 0, p_before = 0, q_before = 1;
  double rest = real;
  for (;;) {
    const double term = std::floor(rest);
    const auto whole = static_cast<std::int64_t>(term);
    const std::int64_t p_next = whole * p + p_before, q_next = whole * q + q_before;
    if (q_next > kMostDenominator || p_next > kMostNumerator) break;
    p_before = p, q_before = q, p = p_next, q = q_next;
    const double error = std::abs(static_cast<double>(p) / static_cast<double>(q) - real);
    if (error <= 1e-14 * real || rest - term < 1e-9) break;
    rest = 1 / (rest - term);
  }
  return {p, q};
}

inline std::optional<FrameRate> FrameRate::Parse(const std::string& text, std::string& error) {
  const char *at = text.data(), *const end = at + text.size();
  const auto take = [&at, end](auto& number) {
    const auto [stop, status] = std::from_chars(at, end, number);
    at = stop;
    return status == std::errc();
  };
  double real = 0;
  if (text.find('/') == std::string::npos && take(real) && at == end) return FromReal(real, error);
  at = text.data();
  std::int64_t numerator = 0, denominator = 0;
  const bool is_fraction = take(numerator) && at != end && *at++ == '/' && take(denominator);
  error = "isn't a frame rate such as 25, 29.97 or 30000/1001";
  if (!is_fraction || at != end || numerator <= 0 || denominator <= 0) return {};
  const FrameRate rate(numerator, denominator);
  if (rate.numerator_ > kMostNumerator || rate.denominator_ > kMostDenominator) {
    error = "has too large numbers; use a simpler fraction";
    return {};
  }
  if (!FromReal(rate.Value(), error)) return {};
  return rate;
}

}  // namespace host
