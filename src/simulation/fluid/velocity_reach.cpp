#include "simulation/fluid/velocity_reach.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "math/field_checks.h"

namespace nbx {

namespace {

// Rows are reduced into arrays of this many elements, so that the inner loops are vectorized.
constexpr int kRun = 256;
constexpr float kHuge = std::numeric_limits<float>::max();

// The range of s * f over one plane of the run.
struct Range {
  float lo[kRun], hi[kRun];

  void clear(int n) {
    std::fill_n(lo, n, kHuge);
    std::fill_n(hi, n, -kHuge);
  }
  void widen(const float* f, float s, int n) {
    for (int i = 0; i < n; ++i) {
      const float d = s * f[i];
      lo[i] = d < lo[i] ? d : lo[i];
      hi[i] = d > hi[i] ? d : hi[i];
    }
  }
};

// Outside of every grid, and an index can be added without overflow.
int bounded(float a) { return static_cast<int>(std::clamp(a, -1e9f, 1e9f)); }

// The reach along `axis` of the faces of `box`. For V the box is cut into slabs across y, else
// across z: in a slab of V or W all faces have the same index along the axis.
void reach(int& lo_out, int& hi_out, float s, const Field<float>& f, const IntBox& box, int axis) {
  const int slab = axis == 1 ? 1 : 2, other = 3 - slab;
  float lo = kHuge, hi = -kHuge;
#pragma omp parallel for schedule(static) reduction(min : lo) reduction(max : hi)
  for (int a = box.lo[slab]; a <= box.hi[slab]; ++a) {
    Range range;
    for (int i = box.lo[0]; i <= box.hi[0]; i += kRun) {
      const int n = std::min(kRun, box.hi[0] + 1 - i);
      range.clear(n);
      for (int b = box.lo[other]; b <= box.hi[other]; ++b)
        range.widen(slab == 1 ? &f(i, a, b) : &f(i, b, a), s, n);
      for (int l = 0; l < n; ++l) {
        const float at = axis == 0 ? i + l : a;
        lo = std::min(lo, std::floor(range.lo[l]) + at);
        hi = std::max(hi, std::ceil(range.hi[l]) + at);
      }
    }
  }
  lo_out = bounded(lo);
  hi_out = bounded(hi - 1);
}

}  // namespace

float max_velocity(const Field<float>& U, const Field<float>& V, const Field<float>& W) {
  const Vec3i n = check_mac(U, V, W);
  float largest = 0;
#pragma omp parallel for schedule(static) reduction(max : largest)
  for (int k = 1; k < n[2] - 1; ++k) {
    float square[kRun]{};
    for (int j = 1; j < n[1] - 1; ++j)
      for (int i = 1; i < n[0] - 1; i += kRun) {
        const float *u = &U(i, j, k), *v = &V(i, j, k), *w = &W(i, j, k);
        const float *north = &V(i, j + 1, k), *high = &W(i, j, k + 1);
        for (int l = 0; l < std::min(kRun, n[0] - 1 - i); ++l) {
          const auto larger = [](float x, float y) {
            x = std::abs(x);
            y = std::abs(y);
            return x < y ? y : x;
          };
          const float a = larger(u[l], u[l + 1]);
          const float b = larger(v[l], north[l]);
          const float c = larger(w[l], high[l]);
          const float sum = a * a + b * b + c * c;
          square[l] = sum > square[l] ? sum : square[l];
        }
      }
    largest = std::max(largest, *std::max_element(square, square + kRun));
  }
  return std::sqrt(largest);
}

void advection_buffer(IntBox& box_out, float s, const Field<float>& U, const Field<float>& V,
                      const Field<float>& W, const IntBox& box) {
  const Vec3i n = check_mac(U, V, W);
  const Field<float>* const faces[3] = {&U, &V, &W};
  const IntBox cells = box_intersection(box, {Vec3i(), n - Vec3i(1, 1, 1)});
  box_out = cells;
  if (cells.empty()) return;
  for (int axis = 0; axis < 3; ++axis) {
    IntBox samples = cells;
    ++samples.hi[axis];
    reach(box_out.lo[axis], box_out.hi[axis], s, *faces[axis], samples, axis);
  }
}

}  // namespace nbx
