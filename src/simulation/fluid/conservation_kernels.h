// The inner loops of a transport that conserves, each over one row of cells. Compiled once per
// instruction set (util/isa.h).
#pragma once

#include <cstddef>

namespace nbx {

/// `n` is the number of cells.
struct ConservationKernels {
  /// The sum in double, in an order that depends on n alone.
  double (*sum)(const float* x, int n);
  /// With d = (u(i+1) - u(i) + v_north - v + w_high - w) step: c /= 1 + d, or c *= 1 - d if d < 0
  void (*thin)(float* c, const float* u, const float* v, const float* v_north, const float* w,
               const float* w_high, float step, int n);
  /// How far each cell may fall, [0], and rise, [1]: c - lowest, and min(highest - c, c), with the
  /// extremes over the cell and its six neighbors. The next row and the next plane lie `row` and
  /// `plane` elements on.
  void (*room[2])(float* room, const float* c, std::ptrdiff_t row, std::ptrdiff_t plane, int n);
};

const ConservationKernels& conservation_kernels();

}  // namespace nbx
