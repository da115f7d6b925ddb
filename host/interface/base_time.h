// Times of the host: fractions of integers, in seconds.
//
// The time of a frame is frame / rate, so sums of frame lengths never drift.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "host/interface/frame_rate.h"

namespace host {

/// numerator / denominator seconds. The denominator is above 0. Fractions are not reduced.
class BaseTime {
 public:
  constexpr BaseTime() = default;
  constexpr BaseTime(std::int64_t numerator, std::int64_t denominator)
      : numerator_(numerator), denominator_(denominator) {}

  /// Rounds to a millionth of a second.
  static BaseTime FromSeconds(double seconds) { return {std::llround(seconds * 1e6), 1000000}; }
  static constexpr BaseTime FromFrame(std::int64_t frame, const FrameRate& rate) {
    return {frame * rate.Denominator(), rate.Numerator()};
  }

  constexpr std::int64_t GetNumerator() const { return numerator_; }
  constexpr std::int64_t GetDenominator() const { return denominator_; }

  /// Seconds.
  double Get() const { return static_cast<double>(numerator_) / static_cast<double>(denominator_); }

  /// The frame at this time: floor(time * rate), also for negative times.
  constexpr std::int64_t GetFrame(const FrameRate& rate) const {
    const auto [n, d] = InFrames(rate);
    return static_cast<std::int64_t>(n / d - (n % d < 0 ? 1 : 0));
  }
  /// The position between frames: 2.5 is halfway from frame 2 to frame 3. The time of a frame gives
  /// exactly its number.
  double GetFramePosition(const FrameRate& rate) const {
    const auto [n, d] = InFrames(rate);
    return static_cast<double>(n) / static_cast<double>(d);
  }

  /// Equal as numbers: 1/2 == 2/4.
  friend constexpr bool operator==(const BaseTime& a, const BaseTime& b) {
    return Wide{a.numerator_} * b.denominator_ == Wide{b.numerator_} * a.denominator_;
  }
  friend constexpr bool operator<(const BaseTime& a, const BaseTime& b) {
    return Wide{a.numerator_} * b.denominator_ < Wide{b.numerator_} * a.denominator_;
  }
  /// In lowest terms. Rounded to a millionth if these don't fit.
  friend BaseTime operator+(const BaseTime& a, const BaseTime& b) {
    const auto [n, d] =
        Reduced({Wide{a.numerator_} * b.denominator_ + Wide{b.numerator_} * a.denominator_,
                 Wide{a.denominator_} * b.denominator_});
    constexpr Wide most = std::numeric_limits<std::int64_t>::max();
    if (n > most || n < -most || d > most) return FromSeconds(a.Get() + b.Get());
    return {static_cast<std::int64_t>(n), static_cast<std::int64_t>(d)};
  }
  friend BaseTime operator-(const BaseTime& a, const BaseTime& b) {
    return a + BaseTime{-b.numerator_, b.denominator_};
  }

 private:
  __extension__ typedef __int128 Wide;  // holds any product of two terms
  struct Ratio {
    Wide numerator, denominator;
  };

  static constexpr Ratio Reduced(Ratio r) {
    Wide a = r.numerator < 0 ? -r.numerator : r.numerator, b = r.denominator;
    while (b != 0) {
      const Wide rest = a % b;
      a = b;
      b = rest;
    }
    return {r.numerator / a, r.denominator / a};
  }
  constexpr Ratio InFrames(const FrameRate& rate) const {
    return Reduced({Wide{numerator_} * rate.Numerator(), Wide{denominator_} * rate.Denominator()});
  }

  std::int64_t numerator_ = 0;
  std::int64_t denominator_ = 1;
};

}  // namespace host
