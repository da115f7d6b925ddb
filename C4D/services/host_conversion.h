// Converts values of the host to those of the simulation. The host's space is left-handed, the
// grid's right-handed: functions named `flipped` negate z.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "cache/frame_time.h"
#include "host/interface/scene.h"
#include "math/affine_transform.h"
#include "math/rational_spline.h"

namespace nbx {

inline Vec3d to_vector(const host::Vector& v) { return {v.x, v.y, v.z}; }
inline std::array<float, 3> to_color(const host::Vector& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}
inline Vec3d to_flipped_vector(const host::Vector& v) { return {v.x, v.y, -v.z}; }

inline Affine3d to_affine(const host::Matrix& m) {
  Affine3d a;
  a.rows = {Vec3d(m.v1.x, m.v2.x, m.v3.x), Vec3d(m.v1.y, m.v2.y, m.v3.y),
            Vec3d(m.v1.z, m.v2.z, m.v3.z)};
  a.translation = to_vector(m.off);
  return a;
}

/// Ready for evaluation.
inline RationalSpline to_spline(const host::CurvePoints& points) {
  constexpr double most = 1e12, least_bias = 1e-6;  // safe in floats
  RationalSpline spline;
  for (const host::CurvePoint& p : points) {
    const int index = spline.addPoint(static_cast<float>(std::clamp(p.x, -most, most)),
                                      static_cast<float>(std::clamp(p.y, -most, most)),
                                      static_cast<std::int32_t>(p.in_mode),
                                      static_cast<std::int32_t>(p.out_mode));
    spline.setBias(index, static_cast<float>(std::clamp(p.bias, least_bias, 1 - least_bias)));
  }
  spline.rebuild();
  return spline;
}

/// Seconds as a fraction.
inline Fraction to_fraction(const host::BaseTime& t) {
  return normalize(
      {static_cast<double>(t.GetNumerator()), static_cast<double>(t.GetDenominator())});
}

inline host::BaseTime to_base_time(const Fraction& f) {
  return {std::llround(f.num), std::max<std::int64_t>(std::llround(f.den), 1)};
}

/// Seconds from one frame to the next.
inline Fraction frame_length(const host::FrameRate& rate) {
  return {static_cast<double>(rate.Denominator()), static_cast<double>(rate.Numerator())};
}

/// The document time of a frame.
inline FrameTime frame_time(int frame, const host::FrameRate& rate) {
  return {to_fraction(host::BaseTime::FromFrame(frame, rate)), frame_length(rate)};
}

/// Evaluates the scene at a time.
inline void evaluate(host::BaseDocument& document, const host::BaseTime& time) {
  document.SetTime(time);
  document.ExecutePasses(nullptr, true, true, true);
}

/// Evaluates the scene at a time in seconds, precise to a millionth.
inline void evaluate(host::BaseDocument& document, double seconds) {
  evaluate(document, host::BaseTime::FromSeconds(seconds));
}

}  // namespace nbx
