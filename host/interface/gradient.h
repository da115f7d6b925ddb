// A color and an opacity that change along the unit interval.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/interface/vector.h"

namespace host {

/// How a gradient goes from a knot to the next one.
enum class GradientMode : std::int32_t {
  Linear = 0,
  Smooth = 1,  ///< level at both knots
  Step = 2,    ///< the knot's own values, up to the next one
};

struct GradientKnot {
  double position = 0;  ///< 0 to 1
  Vector color;         ///< linear light, at least 0; above 1 is fine
  double alpha = 1;     ///< 0 to 1
  GradientMode mode = GradientMode::Linear;
  friend bool operator==(const GradientKnot&, const GradientKnot&) = default;
};

struct Gradient {
  std::vector<GradientKnot> knots;  ///< by position; of two at one place the second one counts

  /// Color and opacity at a position: the first knot's before it, the last one's after it. Black
  /// and opaque without knots. The result's own position and mode mean nothing.
  GradientKnot Evaluate(double position) const {
    const auto right =
        std::upper_bound(knots.begin(), knots.end(), position,
                         [](double at, const GradientKnot& knot) { return at < knot.position; });
    if (knots.empty()) return {};
    if (right == knots.begin()) return knots.front();
    const GradientKnot& left = *(right - 1);
    if (right == knots.end() || left.mode == GradientMode::Step) return left;
    double t = (position - left.position) / (right->position - left.position);
    if (left.mode == GradientMode::Smooth) t *= t * (3 - 2 * t);
    return {.position = position,
            .color = left.color * (1 - t) + right->color * t,
            .alpha = left.alpha * (1 - t) + right->alpha * t};
  }
  friend bool operator==(const Gradient&, const Gradient&) = default;
};

}  // namespace host
