#include "math/rational_spline.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace nbx {

namespace {

// The spline, or a rebuilt copy of it if it is dirty.
const RationalSpline& rebuilt(const RationalSpline& spline, RationalSpline& copy) {
  if (!spline.dirty()) return spline;
  copy = spline;
  copy.rebuild();
  return copy;
}

// p op= q in all that is added and subtracted.
template <class Op>
void combine(ControlPoint& p, const ControlPoint& q, Op op) {
  for (float ControlPoint::*member :
       {&ControlPoint::x, &ControlPoint::y, &ControlPoint::inSlope, &ControlPoint::outSlope,
        &ControlPoint::sideBias, &ControlPoint::bias})
    p.*member = op(p.*member, q.*member);
}

}  // namespace

int RationalSpline::addPoint(float x, float y, std::int32_t inMode, std::int32_t outMode) {
  ControlPoint point;
  point.x = x;
  point.y = y;
  point.inMode = inMode;
  point.outMode = outMode;
  edit_points().push_back(point);
  return static_cast<int>(points_.size()) - 1;
}

std::vector<ControlPoint>& RationalSpline::edit_points() {
  dirty_ = true;
  return points_;
}

void RationalSpline::removePoint(int index) {
  if (index >= 0 && index < std::ssize(points_)) edit_points().erase(points_.begin() + index);
}

void RationalSpline::setSideBias(int index, float bias) {
  if (index >= 0 && index < std::ssize(points_)) edit_points()[index].sideBias = bias;
}

void RationalSpline::setBias(int index, float bias) {
  if (index >= 0 && index < std::ssize(points_)) edit_points()[index].bias = bias;
}

void RationalSpline::setBiasFromSlider(int id, double value) {
  if (id < 0 || id >= std::ssize(points_)) return;
  const auto point = std::ranges::find(points_, id, &ControlPoint::id);
  if (point == points_.end()) return;
  const double e = 0.5 * std::exp(-std::abs(value));
  point->bias = static_cast<float>(value < 0 ? e : 1 - e);
  dirty_ = true;
}

float RationalSpline::minX() const {
  return points_.empty() ? 0 : std::ranges::min(points_, {}, &ControlPoint::x).x;
}

float RationalSpline::maxX() const {
  return points_.empty() ? 0 : std::ranges::max(points_, {}, &ControlPoint::x).x;
}

float RationalSpline::eval(float v) {
  if (dirty_) rebuild();
  return evaluate(v);
}

float RationalSpline::evaluate(float v) const {
  if (knots_.empty()) return 0;
  if (spans_.empty() || v <= knots_.front().x) return knots_.front().y;
  if (v > knots_.back().x) return knots_.back().y;
  // The first span that ends at v or beyond; NaN ends up in the last one.
  std::size_t i = 0;
  while (i + 1 < spans_.size() && !(v <= spans_[i + 1].x)) ++i;
  const SplineSpan& span = spans_[i];
  return span.rational ? span_value<true>(span, v) : span_value<false>(span, v);
}

RationalSpline& RationalSpline::operator+=(const RationalSpline& other) {
  const std::size_t shared = std::min(points_.size(), other.points_.size());
  for (std::size_t i = 0; i < shared; ++i)
    combine(points_[i], other.points_[i], std::plus<float>());
  for (std::size_t i = shared; i < other.points_.size(); ++i) points_.push_back(other.points_[i]);
  dirty_ = true;
  return *this;
}

RationalSpline& RationalSpline::operator-=(const RationalSpline& other) {
  const std::size_t shared = std::min(points_.size(), other.points_.size());
  for (std::size_t i = 0; i < shared; ++i)
    combine(points_[i], other.points_[i], std::minus<float>());
  dirty_ = true;
  return *this;
}

bool operator==(const RationalSpline& a, const RationalSpline& b) {
  RationalSpline copy_a, copy_b;
  const RationalSpline &p = rebuilt(a, copy_a), &q = rebuilt(b, copy_b);
  return p.bias_ == q.bias_ && p.bezier_ == q.bezier_;
}

bool operator<(const RationalSpline& a, const RationalSpline& b) {
  if (a.points_.size() != b.points_.size()) return a.points_.size() < b.points_.size();
  RationalSpline copy_a, copy_b;
  const RationalSpline &p = rebuilt(a, copy_a), &q = rebuilt(b, copy_b);
  for (std::size_t i = 0; i < p.bezier_.size(); ++i) {
    const RationalSpline::BezierKnot &s = p.bezier_[i], &t = q.bezier_[i];
    const bool in_less = i == 0 || s.in_handle < t.in_handle;
    if (!(s.x < t.x && s.y < t.y && in_less && s.out_handle < t.out_handle &&
          p.bias_[i] < q.bias_[i]))
      return false;
  }
  return true;
}

}  // namespace nbx
