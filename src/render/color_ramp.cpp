#include "render/color_ramp.h"

#include <algorithm>

namespace nbx {

Color ColorRamp::lookup(float value) const {
  alignas(64) float values[kBlock] = {value};
  Colors out;
  lookup(out, values, 1);
  return out.at(0);
}

GradientRamp::GradientRamp(std::vector<GradientKnot> knots, double scale)
    : knots_(std::move(knots)) {
  std::stable_sort(knots_.begin(), knots_.end(), [](const GradientKnot& a, const GradientKnot& b) {
    return a.position < b.position;
  });
  for (GradientKnot& knot : knots_)
    for (float& c : knot.color) c *= float(scale);
}

void GradientRamp::lookup(Colors& out, const float* values, int n) const {
  using Interpolation = GradientKnot::Interpolation;
  const std::size_t count = knots_.size();
  for (int i = 0; i < n; ++i) {
    std::size_t next = 0;  // the first knot beyond the value
    while (next < count && values[i] >= knots_[next].position) ++next;
    if (next == 0 || next == count) {
      const Color end = count == 0 ? Color{} : knots_[std::min(next, count - 1)].color;
      for (int c = 0; c < 3; ++c) out.c[c][i] = end[c];
      continue;
    }
    const GradientKnot &a = knots_[next - 1], &b = knots_[next];
    float t = (values[i] - a.position) / (b.position - a.position);
    if (a.interpolation == Interpolation::kSmooth) t = t * t * (3 - 2 * t);
    if (a.interpolation == Interpolation::kStep) t = 0;
    for (int c = 0; c < 3; ++c) out.c[c][i] = a.color[c] + (b.color[c] - a.color[c]) * t;
  }
}

Color GradientRamp::maxColor() const {
  Color most{0, 0, 0};
  for (std::size_t k = 0; k < knots_.size(); ++k)
    for (int c = 0; c < 3; ++c)
      most[c] = k == 0 ? knots_[k].color[c] : std::max(most[c], knots_[k].color[c]);
  return most;
}

}  // namespace nbx
