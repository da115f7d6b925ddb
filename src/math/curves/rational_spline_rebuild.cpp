// Rebuilds a spline: computes from the control points what evaluation reads.
#include <algorithm>
#include <cmath>
#include <compare>
#include <limits>

#include "math/rational_spline.h"

namespace nbx {

namespace {

// Points at the same x become a step of this width, or of one unit in the last place.
constexpr float kStep = 0.000001f;
constexpr float kThird = 0.33333334f;
// Nearer to 0 or 1 the terms of a span cancel in float, and its denominator can vanish.
constexpr float kLeastBias = 1.0f / 16384;

float usable_bias(float bias) { return std::min(std::max(kLeastBias, bias), 1 - kLeastBias); }

// NaN comes last, so that the other points are still in order.
std::weak_ordering order(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) <=> std::isnan(b);
  return std::weak_order(a, b);
}

SplineSpan make_span(const RationalSpline::Knot& from, const RationalSpline::Knot& to, float b) {
  const float m0 = from.outTangent, m1 = to.inTangent, width = to.x - from.x;
  if (b == 0.5f) {
    const float d = to.y - from.y;
    return {from.x, width, m0 + m1 - 2 * d, 3 * d - 2 * m0 - m1, m0, from.y, b, false};
  }
  const float p = from.y * b, q0 = m0 * b, q1 = m1 * (1 - b), d = to.y * (1 - b) - p;
  return {from.x, width, q0 + q1 - 2 * d, 3 * d - 2 * q0 - q1, q0, p, b, true};
}

}  // namespace

void RationalSpline::rebuild() {
  sort_points();
  compute_tangents();
  compute_spans();
  dirty_ = false;
}

void RationalSpline::sort_points() {
  std::vector<ControlPoint> sorted = points_;
  for (std::size_t i = 0; i < sorted.size(); ++i) sorted[i].id = static_cast<std::int32_t>(i);
  std::ranges::sort(sorted, [](const ControlPoint& a, const ControlPoint& b) {
    const auto by_x = order(a.x, b.x);
    return by_x != 0 ? by_x < 0 : order(a.y, b.y) < 0;
  });
  knots_.clear();
  bias_.clear();
  for (const ControlPoint& point : sorted) {
    points_[point.id].id = static_cast<std::int32_t>(knots_.size());
    float x = point.x;
    if (!knots_.empty() && !(x > knots_.back().x)) {
      const float before = knots_.back().x;
      x = std::max(before + kStep, std::nextafter(before, std::numeric_limits<float>::infinity()));
    }
    knots_.push_back({x, point.y, 0, 0});
    bias_.push_back(usable_bias(point.bias));
  }
}

void RationalSpline::compute_tangents() {
  const std::size_t n = knots_.size();
  std::vector<const ControlPoint*> sources(n);
  for (const ControlPoint& point : points_) sources[point.id] = &point;
  for (std::size_t i = 0; i < n; ++i) {
    const ControlPoint& point = *sources[i];
    Knot& knot = knots_[i];
    const bool first = i == 0, last = i + 1 == n;
    // The slope of the chord between the neighbors; 0 at the ends.
    float chord = 0;
    if (!first && !last)
      chord = (knots_[i + 1].y - knots_[i - 1].y) / (knots_[i + 1].x - knots_[i - 1].x);
    // Tangents are slopes times the width of their span.
    const auto tangent = [&](std::int32_t mode, const Knot& a, const Knot& b, float slope) {
      if (mode == kLinearTangent) return b.y - a.y;
      if (mode == kSmoothTangent) return chord * (b.x - a.x);
      return mode == kSlopeTangent ? (b.x - a.x) * slope : 0.0f;
    };
    if (!first)
      knot.inTangent = tangent(point.inMode, knots_[i - 1], knot, point.inSlope) * 2 * bias_[i - 1];
    if (!last)
      knot.outTangent =
          tangent(point.outMode, knot, knots_[i + 1], point.outSlope) * 2 * (1 - bias_[i]);
  }
}

void RationalSpline::compute_spans() {
  bezier_.clear();
  spans_.clear();
  for (std::size_t i = 0; i < knots_.size(); ++i) {
    const Knot& knot = knots_[i];
    bezier_.push_back({knot.x, knot.y, i == 0 ? 0 : knot.y - knot.inTangent * kThird,
                       knot.y + knot.outTangent * kThird});
    if (i > 0) spans_.push_back(make_span(knots_[i - 1], knot, bias_[i - 1]));
  }
}

}  // namespace nbx
