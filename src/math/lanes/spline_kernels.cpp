#include "math/lanes/spline_kernels.h"

namespace nbx::NBX_ISA {

namespace {

// Uses a span's value for every v beyond its beginning, even beyond its end, where a later span
// replaces it. So no search is needed, and NaN gets the value of the last span.
template <bool kRational>
void evaluate_span(float* __restrict dst, const float* __restrict v, int n,
                   const SplineSpan& span) {
  const SplineSpan s = span;
  for (int i = 0; i < n; ++i) {
    const float value = span_value<kRational>(s, v[i]);
    dst[i] = v[i] <= s.x ? dst[i] : value;
  }
}

void evaluate(float* __restrict dst, const float* __restrict v, int n, const SplineTable& table) {
  for (int i = 0; i < n; ++i) dst[i] = table.first_y;
  for (int k = 0; k < table.count; ++k)
    if (table.spans[k].rational)
      evaluate_span<true>(dst, v, n, table.spans[k]);
    else
      evaluate_span<false>(dst, v, n, table.spans[k]);
  for (int i = 0; i < n; ++i) dst[i] = v[i] > table.last_x ? table.last_y : dst[i];
}

}  // namespace

extern const SplineKernels kSplineKernels;
const SplineKernels kSplineKernels{evaluate};

}  // namespace nbx::NBX_ISA
