// Color and opacity as functions on the unit interval.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/interface/vector.h"

namespace host {

/// Interpolation from a knot to the next one.
enum class GradientMode : std::int32_t {
  Linear = 0,
  Smooth = 1,  ///< level at both knots
  Step = 2,    ///< the knot's values up to the next knot
};

struct GradientKnot {
  double position = 0;  ///< 0 to 1
  Vector color;         ///< linear light, at least 0, may exceed 1
  double alpha = 1;     ///< 0 to 1
  GradientMode mode = GradientMode::Linear;
  friend bool operator==(const GradientKnot&, const GradientKnot&) = default;
};

struct Gradient {
  std::vector<GradientKnot>
      knots;  ///< sorted by position; of two knots at one position the second counts

  /// Color and opacity at a position. Constant before the first knot and after the last. Black and
  /// opaque without knots. Position and mode of the result have no meaning.
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
