#include "math/spline_operators.h"

#include <algorithm>

#include "math/field_checks.h"
#include "math/lanes/spline_kernels.h"
#include "util/cuda_use_flags.h"
#include "util/isa.h"

NBX_DECLARE_ISA(SplineKernels, kSplineKernels)

namespace nbx {

const SplineKernels& spline_kernels() { return NBX_SELECT_ISA(kSplineKernels); }

namespace {

using Here = std::source_location;

// Cells whose curve values are held at a time.
constexpr std::ptrdiff_t kChunk = 1024;

// NaN on either side gives NaN.
float lesser(float a, float b) { return a < b || a != a ? a : b; }
// std::max gives its first argument when that is NaN.
float positive(float a) { return std::max(a, 0.0f); }

SplineTable table_of(RationalSpline& spline) {
  if (spline.dirty()) spline.rebuild();
  return spline.table();
}

// dst[i] = op(src[i], spline(driver[i])), in all cells or in the parts that are held.
template <class Op>
void for_each_cell(Field<float>& dst, const Field<float>& src, const Field<float>& driver,
                   RationalSpline& spline, const Occupancy* held, Op op, Here where) {
  check_elementwise(where, dst, src, driver);
  const SplineTable table = table_of(spline);
  const SplineKernels& kernels = spline_kernels();
  const std::ptrdiff_t count = dst.count();
  const bool in_place = &dst == &src || &dst == &driver;
  const auto apply = [&](std::ptrdiff_t first, std::ptrdiff_t end) {
    const int n = static_cast<int>(end - first);
    float s[kChunk];
    kernels.evaluate(s, driver.data() + first, n, table);
    float* d = dst.data() + first;
    const float* x = src.data() + first;
#pragma omp simd
    for (int i = 0; i < n; ++i) d[i] = op(x[i], s[i]);
  };
  const auto clear = [&](std::ptrdiff_t first, std::ptrdiff_t end) {
    if (!in_place) std::fill(dst.data() + first, dst.data() + end, 0.0f);
  };
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t first = 0; first < count; first += kChunk) {
    const std::ptrdiff_t end = std::min(first + kChunk, count);
    held ? held->for_each(first, end, apply, clear) : apply(first, end);
  }
}

}  // namespace

void apply_function(Field<float>& dst, const Field<float>& src, RationalSpline& spline) {
  for_each_cell(
      dst, src, src, spline, nullptr, [](float, float s) { return s; }, Here::current());
}

void decay_linear(Field<float>& dst, const Field<float>& src, const Field<float>& driver, float a,
                  RationalSpline& spline, const Occupancy* held) {
  for_each_cell(
      dst, src, driver, spline, held,
      [a](float x, float s) { return positive(x - lesser(positive(s), a)); }, Here::current());
}

void emit_linear(Field<float>& dst, const Field<float>& src, const Field<float>& driver, float a,
                 RationalSpline& spline, const Occupancy* held) {
  for_each_cell(
      dst, src, driver, spline, held,
      [a](float x, float s) { return lesser(x, lesser(positive(s), a)); }, Here::current());
}

void decay_exponential(Field<float>& dst, const Field<float>& src, const Field<float>& driver,
                       float a, RationalSpline& spline, const Occupancy* held) {
  for_each_cell(
      dst, src, driver, spline, held,
      [a](float x, float s) { return x - a * lesser(x, positive(s)); }, Here::current());
}

void emit_exponential(Field<float>& dst, const Field<float>& src, const Field<float>& driver,
                      float a, RationalSpline& spline, const Occupancy* held) {
  for_each_cell(
      dst, src, driver, spline, held, [a](float x, float s) { return a * lesser(x, positive(s)); },
      Here::current());
}

void m_apply_function(MField& dst, const MField& src, RationalSpline& spline) {
  try_gpu(no_kernel,
          [&] { on_cpu([&](auto& d, auto& s) { apply_function(d, s, spline); }, dst, src); });
}

void m_decay_linear(MField& dst, const MField& src, const MField& driver, float a,
                    RationalSpline& spline, const Occupancy* held) {
  try_gpu(no_kernel, [&] {
    on_cpu([&](auto& d, auto& s, auto& by) { decay_linear(d, s, by, a, spline, held); }, dst, src,
           driver);
  });
}

void m_emit_linear(MField& dst, const MField& src, const MField& driver, float a,
                   RationalSpline& spline, const Occupancy* held) {
  try_gpu(no_kernel, [&] {
    on_cpu([&](auto& d, auto& s, auto& by) { emit_linear(d, s, by, a, spline, held); }, dst, src,
           driver);
  });
}

void m_decay_exponential(MField& dst, const MField& src, const MField& driver, float a,
                         RationalSpline& spline, const Occupancy* held) {
  try_gpu(no_kernel, [&] {
    on_cpu([&](auto& d, auto& s, auto& by) { decay_exponential(d, s, by, a, spline, held); }, dst,
           src, driver);
  });
}

void m_emit_exponential(MField& dst, const MField& src, const MField& driver, float a,
                        RationalSpline& spline, const Occupancy* held) {
  try_gpu(no_kernel, [&] {
    on_cpu([&](auto& d, auto& s, auto& by) { emit_exponential(d, s, by, a, spline, held); }, dst,
           src, driver);
  });
}

}  // namespace nbx
