#include "math/field_operators.h"

#include <algorithm>

#include "math/field_checks.h"

namespace nbx {

namespace {

constexpr std::ptrdiff_t kBlock = 1 << 14;
// Below this number of elements, threads cost more time than they save.
constexpr std::ptrdiff_t kParallel = 1 << 16;

template <class Op, class... T>
void run(float* dst, std::ptrdiff_t n, Op op, const T*... src) {
#pragma omp simd
  for (std::ptrdiff_t i = 0; i < n; ++i) dst[i] = op(src[i]...);
}

// dst[i] = op(src[i] ...) in the parts that are held. `where` is the place that a failed check
// names.
template <class Op, class... F>
void elementwise_held(std::source_location where, const Occupancy& held, Field<float>& dst, Op op,
                      const F&... src) {
  check_elementwise(where, dst, src...);
  const std::ptrdiff_t n = dst.count();
  const bool in_place = ((&dst == &src) || ...);
#pragma omp parallel for schedule(static) if (n >= kParallel)
  for (std::ptrdiff_t i = 0; i < n; i += kBlock)
    held.for_each(
        i, std::min(i + kBlock, n),
        [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
          run(dst.data() + begin, end - begin, op, (src.data() + begin)...);
        },
        [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
          if (!in_place) std::fill(dst.data() + begin, dst.data() + end, 0.0f);
        });
}

// dst[i] = op(src[i] ...), in all cells or in the parts that are held.
template <class Op, class... F>
void elementwise(std::source_location where, const Occupancy* held, Field<float>& dst, Op op,
                 const F&... src) {
  if (held) return elementwise_held(where, *held, dst, op, src...);
  check_elementwise(where, dst, src...);
  const std::ptrdiff_t n = dst.count();
#pragma omp parallel for schedule(static) if (n >= kParallel)
  for (std::ptrdiff_t i = 0; i < n; i += kBlock)
    run(dst.data() + i, std::min(kBlock, n - i), op, (src.data() + i)...);
}

using Here = std::source_location;

}  // namespace

void set(Field<float>& dst, float a) {
  elementwise(Here::current(), nullptr, dst, [=] { return a; });
}

void max_a_x(Field<float>& dst, float a, const Field<float>& x) {
  elementwise(
      Here::current(), nullptr, dst, [=](float xi) { return std::max(a, xi); }, x);
}

void min_a_x(Field<float>& dst, float a, const Field<float>& x, const Occupancy* held) {
  elementwise(
      Here::current(), held, dst, [=](float xi) { return std::min(a, xi); }, x);
}

void scal(Field<float>& dst, float a, const Field<float>& x, const Occupancy* held) {
  elementwise(
      Here::current(), held, dst, [=](float xi) { return a * xi; }, x);
}

void add(Field<float>& dst, const Field<float>& x, float a) {
  elementwise(
      Here::current(), nullptr, dst, [=](float xi) { return xi + a; }, x);
}

void add_max0(Field<float>& dst, const Field<float>& x, float a, const Occupancy* held) {
  elementwise(
      Here::current(), held, dst, [=](float xi) { return std::max(xi + a, 0.0f); }, x);
}

void max_ax_y(Field<float>& dst, float a, const Field<float>& x, const Field<float>& y) {
  elementwise(
      Here::current(), nullptr, dst, [=](float xi, float yi) { return std::max(yi, a * xi); }, x,
      y);
}

void axpy(Field<float>& dst, float a, const Field<float>& x, const Field<float>& y,
          const Occupancy* held) {
  elementwise(
      Here::current(), held, dst, [=](float xi, float yi) { return a * xi + yi; }, x, y);
}

void axpby(Field<float>& dst, float a, const Field<float>& x, float b, const Field<float>& y) {
  elementwise(
      Here::current(), nullptr, dst, [=](float xi, float yi) { return a * xi + b * yi; }, x, y);
}

void clamp(Field<float>& dst, float lo, float hi) {
  elementwise(
      Here::current(), nullptr, dst, [=](float v) { return std::min(std::max(v, lo), hi); }, dst);
}

}  // namespace nbx
