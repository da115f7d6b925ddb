// The uniform cubic B-spline, for floats and for rows of lanes alike.
#pragma once

namespace nbx {

/// Weights of the points -1, 0, 1 and 2, seen from a place t in [0, 1] between points 0 and 1.
/// `Weights` is a type of four T.
template <class Weights, class T>
inline Weights bspline_weights(T t) {
  constexpr float sixth = 1.0f / 6;
  const T t2 = t * t, t3 = t2 * t;
  return {sixth - t3 * sixth + (t2 - t) * 0.5f, t3 * 0.5f - t2 + 2.0f / 3,
          sixth - (t3 - t2 - t) * 0.5f, t3 * sixth};
}

}  // namespace nbx
