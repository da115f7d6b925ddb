// Times as exact fractions, so that a clock that advances by 1/25 s per frame hits every frame.
#pragma once

namespace nbx {

/// num / den. 1/0 is infinity.
struct Fraction {
  double num = 0;
  double den = 1;
  bool operator==(const Fraction&) const = default;
  double value() const { return num / den; }
};

/// Reduces to lowest terms with a positive denominator. Fractions with den = 0, an infinite part or
/// a NaN are returned unchanged; magnitudes below 1e-6 count as 0. Terms that are whole numbers
/// below 2^53 are reduced exactly.
Fraction normalize(Fraction f);

/// Results are in lowest terms, and exact if all terms are whole numbers.
Fraction operator+(const Fraction& a, const Fraction& b);
Fraction operator*(const Fraction& a, const Fraction& b);

/// a < b. Equal denominators compare numerators; else floor(a.num b.den) against floor(b.num
/// a.den).
bool fraction_less(const Fraction& a, const Fraction& b);

/// A time in seconds and the length of a frame.
struct FrameTime {
  Fraction time{0, 1};
  Fraction length{1, 1};
  bool operator==(const FrameTime&) const = default;

  /// floor(time / length), computed on the reduced fraction: -9/2 at length 1 is frame -5. Numbers
  /// beyond an int are clamped; NaN becomes 0.
  int frame() const;
  /// 1 / length, or 0 for a length that isn't above 0.
  double frames_per_second() const;
};

/// `time` advanced by one frame length.
FrameTime next_frame(const FrameTime& time);

}  // namespace nbx
