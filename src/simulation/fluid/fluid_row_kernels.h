// The inner loops of the staggered calculus, each over one row of cells. Compiled once per
// instruction set (util/isa.h).
#pragma once

namespace nbx {

/// `n` is the number of cells. `phi_before` and `p_before` belong to the cells across the faces.
struct FluidRowKernels {
  /// rhs = (u(i) - u(i+1) + v - v_north + w - w_high) inv_dx
  void (*neg_divergence)(float* rhs, const float* u, const float* v, const float* v_north,
                         const float* w, const float* w_high, double inv_dx, int n);
  /// rhs = 0 where phi isn't above 0
  void (*clear_solid)(float* rhs, const float* phi, int n);
  /// u -= (p - p_before) dx
  void (*subtract_gradient)(float* u, const float* p, const float* p_before, double dx, int n);
  /// The same, where phi and phi_before are above 0
  void (*subtract_gradient_in_fluid)(float* u, const float* p, const float* p_before,
                                     const float* phi, const float* phi_before, double dx, int n);
  /// u += (f + f_before) a, with f and f_before clamped to [0, 1]
  void (*add_clamped)(float* u, const float* f, const float* f_before, float a, int n);
};

const FluidRowKernels& fluid_row_kernels();

}  // namespace nbx
