#include "simulation/fluid/conservation_kernels.h"

namespace nbx::NBX_ISA {

namespace {

constexpr int kLanes = 16;

double sum(const float* x, int n) {
  double lanes[kLanes]{};
  int i = 0;
  for (; i + kLanes <= n; i += kLanes)
    for (int l = 0; l < kLanes; ++l) lanes[l] += x[i + l];
  double total = 0;
  for (const double lane : lanes) total += lane;
  for (; i < n; ++i) total += x[i];
  return total;
}

void thin(float* __restrict c, const float* u, const float* v, const float* v_north, const float* w,
          const float* w_high, float step, int n) {
  for (int i = 0; i < n; ++i) {
    const float d = ((u[i + 1] - u[i]) + (v_north[i] - v[i]) + (w_high[i] - w[i])) * step;
    const float expanded = c[i] / (1 + d), contracted = c[i] * (1 - d);
    c[i] = d > 0 ? expanded : contracted;
  }
}

float lower(float a, float b) { return b < a ? b : a; }
float higher(float a, float b) { return a < b ? b : a; }

void room_to_fall(float* __restrict room, const float* c, std::ptrdiff_t row, std::ptrdiff_t plane,
                  int n) {
  for (int i = 0; i < n; ++i) {
    const float* const at = c + i;
    const float x = lower(at[-1], at[1]), y = lower(at[-row], at[row]),
                z = lower(at[-plane], at[plane]);
    room[i] = at[0] - lower(lower(x, y), lower(z, at[0]));
  }
}

void room_to_rise(float* __restrict room, const float* c, std::ptrdiff_t row, std::ptrdiff_t plane,
                  int n) {
  for (int i = 0; i < n; ++i) {
    const float* const at = c + i;
    const float x = higher(at[-1], at[1]), y = higher(at[-row], at[row]),
                z = higher(at[-plane], at[plane]);
    const float to_highest = higher(higher(x, y), higher(z, at[0])) - at[0];
    room[i] = higher(lower(to_highest, at[0]), 0.0f);
  }
}

}  // namespace

extern const ConservationKernels kConservationKernels;
const ConservationKernels kConservationKernels{sum, thin, {room_to_fall, room_to_rise}};

}  // namespace nbx::NBX_ISA
