// The box filter of a fractional radius along lines, for filter_separable.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "math/filters/separable_filter.h"

namespace nbx {

// The weights of a box filter at the distances n, n - 1 and nearer; they add up to 1:
//
//     w2 w1 w0 ... w0 w1 w2         n = 1:  w2 w1 w2
struct BoxKernel {
  int n;
  float w0, w1, w2;
};

inline BoxKernel box_kernel(double radius) {
  const double c = std::max(radius - 1, 0.0);
  const double f = radius <= 1 ? radius : c - std::floor(c);
  const double m = std::ceil(c);
  const double b = 0.5 * f * f;
  const double a = (m >= 1 ? 0.5 : 0.0) + f - b;
  const double s = 2 * (a + b);
  const double q = m != 0 ? 1 / (s + 2 * m - 1) : 1 / s;
  return {static_cast<int>(m) + 1, static_cast<float>(q),
          static_cast<float>(m == 0 ? a * 2 * q : a * q), static_cast<float>(b * q)};
}

// The sum under the constant middle of the kernel takes a logarithmic number of additions: sums of
// 2, 4, 8 ... positions come from doubling, and the binary digits of the length select those to
// add. Every value takes part in at most 2 log2(n) additions, so the rounding error is smaller than
// that of adding up the window term by term, and there is no drift along the line as in a running
// sum.
class BoxFilter {
 public:
  explicit BoxFilter(const BoxKernel& kernel) : kernel_(kernel) {}

  std::size_t scratch(int length, int width) const { return (std::size_t{3} * length + 1) * width; }

  void operator()(const Bundle& lines, float* scratch) const {
    const std::ptrdiff_t floats = std::ptrdiff_t{lines.length} * lines.width;
    float *x = scratch, *work = x + floats, *middle = work + floats, *ends = middle + floats;
    lines.pack(x);
    const int n = kernel_.n, length = lines.length;
    inside(lines, x, work, middle);
    cut<false>(lines, x, ends, std::min(n, length));
    cut<true>(lines, x, ends, std::min(n, length - n));
  }

 private:
  // middle[i] = x[i] + x[i + 1] + ... for `count` positions.
  static void sum_windows(float* middle, const float* x, float* work, int count, const Bundle& b) {
    std::ptrdiff_t left = std::ptrdiff_t{b.length} * b.width;  // floats with whole sums
    std::ptrdiff_t done = 0;                                   // floats from i to the next part
    const float* doubled = x;
    for (int part = 1;; part *= 2) {
      const std::ptrdiff_t step = std::ptrdiff_t{part} * b.width;
      if (count & part) {
        const float* from = doubled + done;
        const std::ptrdiff_t whole = left - done;
        if (done == 0) {
          std::copy_n(from, whole, middle);
        } else {
#pragma omp simd
          for (std::ptrdiff_t i = 0; i < whole; ++i) middle[i] += from[i];
        }
        done += step;
      }
      if (2 * part > count) return;
      left -= step;
#pragma omp simd
      for (std::ptrdiff_t i = 0; i < left; ++i) work[i] = doubled[i] + doubled[i + step];
      doubled = work;
    }
  }

  // Positions with their whole window n to each side in the line.
  void inside(const Bundle& lines, const float* x, float* work, float* middle) const {
    const int n = kernel_.n;
    const float w0 = kernel_.w0, w1 = kernel_.w1, w2 = kernel_.w2;
    const int first = n, last = lines.length - n;
    if (first >= last) return;
    const std::ptrdiff_t w = lines.width, far = n * w, near = far - w;
    if (n == 1) {
      lines.for_each_run(first, last, [=](float* dst, std::ptrdiff_t at, std::ptrdiff_t count) {
        const float* p = x + at;
#pragma omp simd
        for (std::ptrdiff_t i = 0; i < count; ++i) dst[i] = w1 * p[i] + w2 * (p[i - w] + p[i + w]);
      });
      return;
    }
    sum_windows(middle, x, work, 2 * n - 3, lines);
    lines.for_each_run(first, last, [=](float* dst, std::ptrdiff_t at, std::ptrdiff_t count) {
      const float *p = x + at, *sum = middle + at - near + w;
#pragma omp simd
      for (std::ptrdiff_t i = 0; i < count; ++i)
        dst[i] = w0 * sum[i] + w1 * (p[i - near] + p[i + near]) + w2 * (p[i - far] + p[i + far]);
    });
  }

  // The first `count` positions, whose windows are cut at position 0; or, mirrored, the last ones.
  template <bool mirrored>
  void cut(const Bundle& lines, const float* x, float* sum, int count) const {
    const int n = kernel_.n;
    const float w0 = kernel_.w0, w1 = kernel_.w1, w2 = kernel_.w2;
    const int end = lines.length - 1;
    const auto place = [=](int p) { return mirrored ? end - p : p; };
    const auto row = [=](int p) { return x + std::ptrdiff_t{place(p)} * lines.width; };
    std::fill_n(sum, lines.width, 0.0f);
    int summed = 1;  // sum = x[2] + ... + x[summed]
    for (int p = 0; p < count; ++p) {
      const int hi = std::min(p + n, end);
      while (summed < hi - 2) {
        const float* next = row(++summed);
        for (int l = 0; l < lines.width; ++l) sum[l] += next[l];
      }
      float* dst = lines.dst + place(p) * lines.stride;
      const float *first = row(0), *last = row(hi);
      if (hi >= 3) {
        const float *second = row(1), *last_but_one = row(hi - 1);
        for (int l = 0; l < lines.width; ++l)
          dst[l] = w0 * sum[l] + w1 * (second[l] + last_but_one[l]) + w2 * (first[l] + last[l]);
      } else if (hi == 2) {
        const float* middle = row(1);
        for (int l = 0; l < lines.width; ++l) dst[l] = w1 * middle[l] + w2 * (first[l] + last[l]);
      } else if (hi == 1) {
        for (int l = 0; l < lines.width; ++l) dst[l] = w2 * (first[l] + last[l]);
      } else {
        for (int l = 0; l < lines.width; ++l) dst[l] = w2 * first[l];
      }
    }
  }

  const BoxKernel kernel_;
};

}  // namespace nbx
