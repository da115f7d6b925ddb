// Time in the host: a fraction of whole numbers, in seconds.
//
// A frame's time is frame / fps, so no sum of frame lengths ever drifts.
#pragma once

#include <cmath>
#include <cstdint>

namespace host {

/// numerator / denominator seconds. The denominator is above 0; fractions aren't reduced.
class BaseTime {
 public:
  constexpr BaseTime() = default;
  constexpr BaseTime(std::int64_t numerator, std::int64_t denominator)
      : numerator_(numerator), denominator_(denominator) {}

  /// The nearest millionth of a second.
  static BaseTime FromSeconds(double seconds) { return {std::llround(seconds * 1e6), 1000000}; }
  static constexpr BaseTime FromFrame(std::int64_t frame, std::int64_t fps) { return {frame, fps}; }

  constexpr std::int64_t GetNumerator() const { return numerator_; }
  constexpr std::int64_t GetDenominator() const { return denominator_; }

  /// Seconds.
  double Get() const { return static_cast<double>(numerator_) / static_cast<double>(denominator_); }

  /// The frame that is showing at this time: floor(time * fps), below 0 too.
  constexpr std::int64_t GetFrame(std::int64_t fps) const {
    const std::int64_t n = numerator_ * fps;
    return n / denominator_ - (n % denominator_ < 0 ? 1 : 0);
  }

  /// Equal as numbers: 1/2 == 2/4.
  friend constexpr bool operator==(const BaseTime& a, const BaseTime& b) {
    return a.numerator_ * b.denominator_ == b.numerator_ * a.denominator_;
  }
  friend constexpr bool operator<(const BaseTime& a, const BaseTime& b) {
    return a.numerator_ * b.denominator_ < b.numerator_ * a.denominator_;
  }

 private:
  std::int64_t numerator_ = 0;
  std::int64_t denominator_ = 1;
};

}  // namespace host
