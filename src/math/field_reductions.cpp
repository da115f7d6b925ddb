#include "math/field_reductions.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace nbx {

namespace {

// A field is reduced in blocks of a fixed size, each in a fixed number of lanes, and the blocks are
// joined in order. So the order of all operations depends only on the number of elements.
constexpr std::ptrdiff_t kBlock = 16384;
constexpr int kLanes = 16;

// Folds n elements by fold(accumulator, element), with lanes that begin at `start`, then joins the
// lanes and the rest.
template <class T, class Fold, class Join>
T reduce_block(const float* x, std::ptrdiff_t n, T start, Fold fold, Join join) {
  T lanes[kLanes];
  std::fill_n(lanes, kLanes, start);
  std::ptrdiff_t i = 0;
  for (; i + kLanes <= n; i += kLanes)
    for (int l = 0; l < kLanes; ++l) lanes[l] = fold(lanes[l], x[i + l]);
  T result = lanes[0];
  for (int l = 1; l < kLanes; ++l) result = join(result, lanes[l]);
  for (; i < n; ++i) result = fold(result, x[i]);
  return result;
}

template <class T, class Fold, class Join>
T reduce(const Field<float>& field, T start, Fold fold, Join join) {
  const float* x = field.data();
  const std::ptrdiff_t n = field.count();
  const std::ptrdiff_t blocks = (n + kBlock - 1) / kBlock;
  std::vector<T> partial(blocks);
#pragma omp parallel for schedule(static) if (blocks > 1)
  for (std::ptrdiff_t b = 0; b < blocks; ++b)
    partial[b] = reduce_block(x + b * kBlock, std::min(kBlock, n - b * kBlock), start, fold, join);
  T result = start;
  for (const T& p : partial) result = join(result, p);
  return result;
}

// Extends `box` by the cells of row (j, k) whose magnitude exceeds the threshold.
void extend_by_row(IntBox& box, const float* row, int nx, int j, int k, float threshold) {
  int any = 0;
  for (int i = 0; i < nx; ++i) any |= std::fabs(row[i]) > threshold;
  if (!any) return;
  int lo = 0, hi = nx - 1;
  while (!(std::fabs(row[lo]) > threshold)) ++lo;
  while (!(std::fabs(row[hi]) > threshold)) --hi;
  box = box_union(box, {{lo, j, k}, {hi, j, k}});
}

}  // namespace

double sum(const Field<float>& x) {
  return reduce(
      x, 0.0, [](double a, float v) { return a + v; }, [](double a, double b) { return a + b; });
}

float infnorm(const Field<float>& x) {
  // The bits of floats without their sign are ordered, as integers, like the floats, with NaNs
  // above all numbers.
  const auto magnitude = [](float v) { return std::bit_cast<std::int32_t>(v) & 0x7fffffff; };
  const std::int32_t largest = reduce(
      x, std::int32_t{0}, [=](std::int32_t a, float v) { return std::max(a, magnitude(v)); },
      [](std::int32_t a, std::int32_t b) { return std::max(a, b); });
  return std::bit_cast<float>(largest);
}

float min(const Field<float>& x) {
  if (x.count() == 0) return 0;
  const auto smaller = [](float a, float b) { return b < a ? b : a; };
  return reduce(x, x[0], smaller, smaller);
}

float max(const Field<float>& x) {
  if (x.count() == 0) return 0;
  const auto larger = [](float a, float b) { return b > a ? b : a; };
  return reduce(x, x[0], larger, larger);
}

IntBox min_bbox(const Field<float>& x, float threshold) {
  IntBox box;
#pragma omp parallel
  {
    IntBox own;
#pragma omp for schedule(static) nowait
    for (int k = 0; k < x.nz(); ++k)
      for (int j = 0; j < x.ny(); ++j)
        extend_by_row(own, x.data() + x.index(0, j, k), x.nx(), j, k, threshold);
#pragma omp critical(nbx_min_bbox)
    box = box_union(box, own);
  }
  return box;
}

}  // namespace nbx
