#include "math/field_reductions.h"

#include <algorithm>
#include <atomic>
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

bool exceeds(const float* x, int n, float threshold) {
  int any = 0;
  for (int i = 0; i < n; ++i) any |= std::fabs(x[i]) > threshold;
  return any != 0;
}

// Narrows lo .. hi to the first and the last index for which holds(index) is true. All threads
// search from both ends inwards, so the middle isn't read. False if there is none.
template <class Holds>
bool narrow(int& lo, int& hi, bool parallel, Holds holds) {
  const int n = hi - lo + 1;
  std::atomic<int> before{n}, behind{n};  // how many are left out at each end
  const auto search = [&](std::atomic<int>& left_out, int at, int index) {
    if (at >= left_out.load(std::memory_order_relaxed) || !holds(index)) return;
    int old = left_out.load(std::memory_order_relaxed);
    while (at < old && !left_out.compare_exchange_weak(old, at, std::memory_order_relaxed)) {
    }
  };
#pragma omp parallel if (parallel)
  {
#pragma omp for schedule(dynamic)
    for (int i = 0; i < n; ++i) search(before, i, lo + i);
    if (before < n) {
#pragma omp for schedule(dynamic)
      for (int i = 0; i < n; ++i) search(behind, i, hi - i);
    }
  }
  lo += before;
  hi -= behind;
  return before < n;
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
  IntBox box{{0, 0, 0}, x.dims() - Vec3i(1, 1, 1)};
  const bool parallel = x.count() >= kBlock;
  const auto row_holds = [&](int j, int k) {
    return exceeds(x.data() + x.index(0, j, k), x.nx(), threshold);
  };
  int &y0 = box.lo[1], &y1 = box.hi[1], &z0 = box.lo[2], &z1 = box.hi[2];
  if (!narrow(z0, z1, parallel, [&](int k) {
        for (int j = 0; j < x.ny(); ++j)
          if (row_holds(j, k)) return true;
        return false;
      }))
    return {};
  narrow(y0, y1, parallel, [&](int j) {
    for (int k = z0; k <= z1; ++k)
      if (row_holds(j, k)) return true;
    return false;
  });

  // Along x, each row is read up to the ends that other rows have reached.
  box.lo[0] = x.nx();
  box.hi[0] = -1;
#pragma omp parallel if (parallel)
  {
    int first = x.nx(), last = -1;
#pragma omp for schedule(static) nowait
    for (int k = z0; k <= z1; ++k)
      for (int j = y0; j <= y1; ++j) {
        const float* row = x.data() + x.index(0, j, k);
        if (exceeds(row, first, threshold))
          for (first = 0; !(std::fabs(row[first]) > threshold);) ++first;
        if (exceeds(row + last + 1, x.nx() - 1 - last, threshold))
          for (last = x.nx() - 1; !(std::fabs(row[last]) > threshold);) --last;
      }
#pragma omp critical(nbx_min_bbox)
    {
      box.lo[0] = std::min(box.lo[0], first);
      box.hi[0] = std::max(box.hi[0], last);
    }
  }
  return box;
}

}  // namespace nbx
