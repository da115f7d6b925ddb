#include "simulation/fluid/fluid_row_kernels.h"

namespace nbx::NBX_ISA {

namespace {

void neg_divergence(float* __restrict rhs, const float* u, const float* v, const float* v_north,
                    const float* w, const float* w_high, double inv_dx, int n) {
  for (int i = 0; i < n; ++i) {
    const double outflow = static_cast<double>(u[i]) - static_cast<double>(u[i + 1]) +
                           static_cast<double>(v[i]) - static_cast<double>(v_north[i]) +
                           static_cast<double>(w[i]) - static_cast<double>(w_high[i]);
    rhs[i] = static_cast<float>(outflow * inv_dx);
  }
}

void clear_solid(float* __restrict rhs, const float* phi, int n) {
  for (int i = 0; i < n; ++i) rhs[i] = phi[i] > 0 ? rhs[i] : 0;
}

float less_gradient(float u, float p, float p_before, double dx) {
  const double dp = static_cast<double>(p) - static_cast<double>(p_before);
  return static_cast<float>(static_cast<double>(u) - dp * dx);
}

void subtract_gradient(float* __restrict u, const float* p, const float* p_before, double dx,
                       int n) {
  for (int i = 0; i < n; ++i) u[i] = less_gradient(u[i], p[i], p_before[i], dx);
}

void subtract_gradient_in_fluid(float* __restrict u, const float* p, const float* p_before,
                                const float* phi, const float* phi_before, double dx, int n) {
  for (int i = 0; i < n; ++i) {
    const bool fluid = (phi[i] > 0) & (phi_before[i] > 0);
    u[i] = fluid ? less_gradient(u[i], p[i], p_before[i], dx) : u[i];
  }
}

float clamped(float f) {
  const float positive = f > 0 ? f : 0;
  return positive > 1 ? 1 : positive;
}

void add_clamped(float* __restrict u, const float* f, const float* f_before, float a, int n) {
  for (int i = 0; i < n; ++i) u[i] += (clamped(f[i]) + clamped(f_before[i])) * a;
}

}  // namespace

extern const FluidRowKernels kFluidRows;
const FluidRowKernels kFluidRows{neg_divergence, clear_solid, subtract_gradient,
                                 subtract_gradient_in_fluid, add_clamped};

}  // namespace nbx::NBX_ISA
