#include "scene/walk/triangle_row_kernels.h"

#include <cstring>

#include "math/lanes/double_lanes.h"

namespace nbx::NBX_ISA {

namespace {

using Run = TriangleRun;
constexpr double kIndex[Run::kCells] = {0, 1, 2, 3, 4, 5, 6, 7};

Doubles load(const double* p) {
  Doubles d;
  std::memcpy(&d, p, sizeof d);
  return d;
}

// All regions are computed for all cells, then the right one is chosen, without a branch.
void square_distances(Run& run) {
  double f[Run::kFunctions][Run::kCells];
  for (int i = 0; i < Run::kFunctions; ++i) {
    double v = run.v[i];
    for (int c = 0; c < Run::kCells; ++c, v += run.gradient[i]) f[i][c] = v;
    run.v[i] = v;
  }
  for (int c = 0; c < Run::kCells; c += kLanes) {
    const Doubles d = load(f[Run::kD] + c);
    const Doubles a0 = load(f[Run::kA0] + c), b0 = load(f[Run::kB0] + c);
    const Doubles a1 = load(f[Run::kA1] + c), b1 = load(f[Run::kB1] + c);
    const Doubles a2 = load(f[Run::kA2] + c), b2 = load(f[Run::kB2] + c);
    const auto square_to = [&](const double(&corner)[3]) {
      const Doubles x = (run.x + load(kIndex + c)) - corner[0];
      return x * x + corner[1] * corner[1] + corner[2] * corner[2];
    };
    const Doubles plane = d * d;
    // The nearest point of cells that rounding puts into no region is a corner: q = d^2. Regions
    // overlap through rounding too: the last one counts.
    Doubles q = plane;
    q = ((a2 < 0) & (a1 > 1)) ? square_to(run.corner[1]) : q;
    q = ((a0 < 0) & (a2 > 1)) ? square_to(run.corner[2]) : q;
    q = ((a1 < 0) & (a0 > 1)) ? square_to(run.corner[0]) : q;
    q = ((b1 < 0) & (a1 >= 0) & (a1 <= 1)) ? plane + b1 * b1 : q;
    q = ((b2 < 0) & (a2 >= 0) & (a2 <= 1)) ? plane + b2 * b2 : q;
    q = ((b0 < 0) & (a0 >= 0) & (a0 <= 1)) ? plane + b0 * b0 : q;
    q = ((b0 >= 0) & (b1 >= 0) & (b2 >= 0)) ? plane : q;
    std::memcpy(run.d + c, &d, sizeof d);
    std::memcpy(run.q + c, &q, sizeof q);
  }
}

}  // namespace

extern const TriangleRowKernels kTriangleRows;
const TriangleRowKernels kTriangleRows{square_distances};

}  // namespace nbx::NBX_ISA
