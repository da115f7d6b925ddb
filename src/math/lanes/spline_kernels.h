// Evaluates a rational spline for a run of values. Compiled once per instruction set (util/isa.h).
#pragma once

#include "math/curves/spline_span.h"

namespace nbx {

struct SplineKernels {
  /// dst[i] = the curve at v[i], with the bits of RationalSpline::evaluate. `dst` isn't `v`.
  void (*evaluate)(float* dst, const float* v, int n, const SplineTable& table);
};

const SplineKernels& spline_kernels();

}  // namespace nbx
