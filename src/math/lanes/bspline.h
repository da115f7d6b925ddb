// The weights of a uniform cubic B-spline.
#pragma once

namespace nbx {

/// The weights of the samples at -1, 0, 1 and 2 for a point at t in [0, 1]. F is a float or a row
/// of lanes, and Weights holds four of them. Always inlined, for kernel files (util/isa.h).
template <class Weights, class F>
[[gnu::always_inline]] inline Weights bspline_weights(F t) {
  const F t2 = t * t, t3 = t2 * t;
  constexpr float sixth = 1.0f / 6;
  return {sixth - t3 * sixth + (t2 - t) * 0.5f, t3 * 0.5f - t2 + 2.0f / 3,
          sixth - (t3 - t2 - t) * 0.5f, t3 * sixth};
}

}  // namespace nbx
