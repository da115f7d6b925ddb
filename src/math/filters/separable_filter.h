// Applies a separable filter to a field: to all lines along x, then y, then z.
//
// Lines are filtered side by side, so that the loops run over contiguous floats on every axis. A
// Filter is called with a bundle of lines and has
//
//     std::size_t scratch(int length, int width) const;        // floats that it needs
//     void operator()(const Bundle& lines, float* scratch) const;
#pragma once

#include <algorithm>
#include <cstddef>

#include <omp.h>

#include "math/field.h"
#include "math/field_pool.h"

namespace nbx {

/// `width` lines of `length` positions: position p of the lines lies at [p * stride, + width).
/// `dst` may be `src`.
struct Bundle {
  float* dst;
  const float* src;
  std::ptrdiff_t stride;
  int length, width;

  /// Calls run(dst, i, n) so that the floats i .. i + n - 1 of the positions first .. last - 1,
  /// counted without gaps between positions, go to dst[0 .. n): as few and long runs as there are.
  template <class Run>
  void for_each_run(int first, int last, Run run) const {
    if (first >= last) return;
    const std::ptrdiff_t w = width;
    if (stride == w) return run(dst + first * w, first * w, (last - first) * w);
    for (std::ptrdiff_t p = first; p < last; ++p) run(dst + p * stride, p * w, w);
  }

  /// Copies the source to `packed`, without gaps between positions.
  void pack(float* packed) const {
    for (std::ptrdiff_t p = 0; p < length; ++p)
      std::copy_n(src + p * stride, width, packed + p * width);
  }
};

/// Filters `field`; `tmp` has its dimensions. The threads share the planes, then the rows. Each has
/// a row of the scratch field.
template <class Filter>
void filter_separable(Field<float>& field, Field<float>& tmp, const Filter& filter) {
  // A bundle and the filter's scratch should fit into the first cache.
  constexpr int kWidth = 32;
  const int nx = field.nx(), ny = field.ny(), nz = field.nz();
  if (field.count() == 0) return;
  const int pieces = (nx + kWidth - 1) / kWidth;
  const int width = (nx + pieces - 1) / pieces;
  const std::size_t floats =
      std::max({filter.scratch(nx, 1), filter.scratch(ny, width), filter.scratch(nz, width)});
  const FieldHandle scratch = acquire_field({static_cast<int>(floats), omp_get_max_threads(), 1});
  const std::ptrdiff_t row = nx, plane = row * ny;

  // Filters all lines across a slab of rows `stride` apart.
  const auto across = [&](float* dst, const float* src, std::ptrdiff_t stride, int length,
                          float* own) {
    for (int i = 0; i < nx; i += width)
      filter(Bundle{dst + i, src + i, stride, length, std::min(width, nx - i)}, own);
  };

#pragma omp parallel
  {
    float* own = scratch->data() + scratch->index(0, omp_get_thread_num(), 0);
#pragma omp for schedule(static)
    for (int k = 0; k < nz; ++k) {
      const float* from = field.data() + k * plane;
      float* to = tmp.data() + k * plane;
      for (int j = 0; j < ny; ++j) filter(Bundle{to + j * row, from + j * row, 1, nx, 1}, own);
      across(to, to, row, ny, own);
    }
#pragma omp for schedule(static)
    for (int j = 0; j < ny; ++j)
      across(field.data() + j * row, tmp.data() + j * row, plane, nz, own);
  }
}

}  // namespace nbx
