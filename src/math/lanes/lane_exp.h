// The exponential of a row of lanes (see lanes.h).
#pragma once

#include "math/lanes/lanes.h"

namespace nbx::NBX_ISA {

/// e^x for x <= 88, within 2e-7 of its size; 0 below -87. Same bits on every instruction set.
///
///     x = n ln 2 + r, |r| <= ln 2 / 2,   e^x = 2^n e^r
///
/// with ln 2 in two parts, so that r keeps its bits, and e^r by its Taylor series to r^7.
inline F exp(F x) {
  const I underflow = x < -87.0f;
  x = select(underflow, F{}, x);
  const F scaled = x * 1.44269504f;
  const I n = truncate(scaled + select(scaled < 0.0f, splat(-0.5f), splat(0.5f)));
  const F whole = to_float(n);
  const F r = (x - whole * 0.693359375f) + whole * 2.12194440e-4f;
  F series = splat(1.0f / 5040);
  series = series * r + 1.0f / 720;
  series = series * r + 1.0f / 120;
  series = series * r + 1.0f / 24;
  series = series * r + 1.0f / 6;
  series = series * r + 0.5f;
  series = series * r + 1.0f;
  series = series * r + 1.0f;
  const F power = reinterpret_cast<F>((n + 127) << 23);
  return select(underflow, F{}, series * power);
}

}  // namespace nbx::NBX_ISA
