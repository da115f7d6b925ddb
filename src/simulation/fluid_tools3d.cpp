#include "simulation/fluid_tools3d.h"

#include "math/field_checks.h"
#include "simulation/field_planes.h"
#include "simulation/fluid/fluid_row_kernels.h"
#include "util/cuda_use_flags.h"
#include "util/isa.h"
#include "util/shared_loop.h"

NBX_DECLARE_ISA(FluidRowKernels, kFluidRows)

namespace nbx {

const FluidRowKernels& fluid_row_kernels() { return NBX_SELECT_ISA(kFluidRows); }

void NegDivergence(Field<float>& rhs, const Field<float>& U, const Field<float>& V,
                   const Field<float>& W, const Field<float>* phi, double inv_dx) {
  check_mac(U, V, W, rhs);
  if (phi) check_dims(*phi, rhs);
  const FluidRowKernels& rows = fluid_row_kernels();
  const int nx = rhs.nx(), ny = rhs.ny(), nz = rhs.nz();
#pragma omp parallel for schedule(static) if (rhs.count() > kSmallField)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j) {
      float* r = &rhs(1, j, k);
      rows.neg_divergence(r, &U(1, j, k), &V(1, j, k), &V(1, j + 1, k), &W(1, j, k),
                          &W(1, j, k + 1), inv_dx, nx - 2);
      if (phi) rows.clear_solid(r, &(*phi)(1, j, k), nx - 2);
    }
  set_border(rhs, 0);
}

void subtract_pressure_gradient(Field<float>& U, Field<float>& V, Field<float>& W,
                                const Field<float>& p, double dx, const Field<float>* phi) {
  check_mac(U, V, W, p);
  if (phi) check_dims(*phi, p);
  const FluidRowKernels& rows = fluid_row_kernels();
  const int nx = p.nx(), ny = p.ny(), nz = p.nz();
  // u -= (p(c) - p(c - step)) dx for the faces between the cells c of a row and those before them.
  const auto subtract = [&](float* u, std::size_t c, std::ptrdiff_t step) {
    const float* at = p.data() + c;
    if (phi)
      rows.subtract_gradient_in_fluid(u, at, at - step, phi->data() + c, phi->data() + c - step, dx,
                                      nx - 1);
    else
      rows.subtract_gradient(u, at, at - step, dx, nx - 1);
  };
#pragma omp parallel for schedule(static) if (p.count() > kSmallField)
  for (int k = 1; k < nz; ++k)
    for (int j = 1; j < ny; ++j) {
      const std::size_t c = p.index(1, j, k);
      subtract(&U(1, j, k), c, 1);
      subtract(&V(1, j, k), c, nx);
      subtract(&W(1, j, k), c, std::ptrdiff_t{nx} * ny);
    }
}

void add_center_to_mac(Field<float>& U, Field<float>& V, Field<float>& W, const Field<float>& f,
                       float a, float b, float c) {
  check_mac(U, V, W, f);
  const FluidRowKernels& rows = fluid_row_kernels();
  const int nx = f.nx(), ny = f.ny(), nz = f.nz();
  const auto add = [&](Field<float>& component, float coefficient, std::ptrdiff_t step) {
    if (coefficient == 0) return;
    shared_loop(1, nz, f.count() > kSmallField, [&](int k) {
      for (int j = 1; j < ny; ++j) {
        const float* at = &f(1, j, k);
        rows.add_clamped(&component(1, j, k), at, at - step, coefficient, nx - 1);
      }
    });
  };
  add(U, a, 1);
  add(V, b, nx);
  add(W, c, std::ptrdiff_t{nx} * ny);
}

void m_add_center_to_mac(MField& U, MField& V, MField& W, MField& f, float a, float b, float c) {
  try_gpu(no_kernel, [&] {
    add_center_to_mac(U.write_cpu(), V.write_cpu(), W.write_cpu(), f.read_cpu(), a, b, c);
  });
}

}  // namespace nbx
