// One span of a rational spline, prepared for evaluation. The scalar form and the kernels share
// this formula and so give the same bits.
#pragma once

namespace nbx {

/// The curve between two knots, with t = (v - x) / width: the numerator is the cubic
/// ((c3 t + c2) t + c1) t + c0, the denominator follows from the bias (see span_value).
struct SplineSpan {
  float x, width;
  float c3, c2, c1, c0;
  float bias;
  bool rational;  // false for a bias of 0.5: then the numerator alone is the curve
};

/// What RationalSpline::evaluate reads, as plain numbers. With no knots all of them are 0.
struct SplineTable {
  const SplineSpan* spans;
  int count;  // of spans
  float first_y, last_x, last_y;
};

/// The span's curve at v, a float or a row of lanes. Always inlined, for kernel files (util/isa.h).
template <bool kRational, class F>
[[gnu::always_inline]] inline F span_value(const SplineSpan& s, F v) {
  const F t = (v - s.x) / s.width;
  const F N = ((s.c3 * t + s.c2) * t + s.c1) * t + s.c0;
  if constexpr (!kRational) return N;
  // De Casteljau on the weights b, b, 1 - b, 1 - b of the four Bezier points, of which the two
  // outer pairs are constant.
  const float b = s.bias;
  const F A = (1 - 2 * b) * t + b;
  const F B = b + (A - b) * t;
  const F C = A + ((1 - b) - A) * t;
  const F D = B + t * (C - B);
  return N / D;
}

}  // namespace nbx
