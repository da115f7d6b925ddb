#include "simulation/vorticity.h"

#include <algorithm>
#include <array>

#include "math/field_checks.h"
#include "math/field_operators.h"
#include "simulation/field_planes.h"
#include "simulation/fluid/vorticity_row_kernels.h"
#include "util/cuda_use_flags.h"
#include "util/isa.h"

NBX_DECLARE_ISA(VorticityRowKernels, kVorticityRows)

namespace nbx {

const VorticityRowKernels& vorticity_row_kernels() { return NBX_SELECT_ISA(kVorticityRows); }

namespace {

RowSteps row_steps(const Field<float>& f) { return {f.nx(), std::ptrdiff_t{f.nx()} * f.ny()}; }

}  // namespace

void VelocityCurl(Field<float>& wx, Field<float>& wy, Field<float>& wz, Field<float>& mag,
                  const Field<float>& U, const Field<float>& V, const Field<float>& W, float dx) {
  const std::array<Field<float>*, 4> curl{&wx, &wy, &wz, &mag};
  for (const Field<float>* f : curl) check_mac(U, V, W, *f);
  const VorticityRowKernels& rows = vorticity_row_kernels();
  const int nx = mag.nx(), ny = mag.ny(), nz = mag.nz();
  if (nx < 3 || ny < 3 || nz < 3) {
    for (Field<float>* f : curl) set(*f, 0);
    return;
  }
  const float s = 1 / (2 * dx);
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k) {
    for (int j = 1; j < ny - 1; ++j) {
      const FaceRow faces{&U(1, j, k),  &V(1, j, k),  &W(1, j, k),
                          row_steps(U), row_steps(V), row_steps(W)};
      const std::size_t c = mag.index(1, j, k);
      rows.curl(&wx[c], &wy[c], &wz[c], &mag[c], faces, s, nx - 2);
    }
    for (Field<float>* f : curl) clamp_plane(*f, k);
  }
}

void VorticityConfinementForce(Field<float>& wx, Field<float>& wy, Field<float>& wz,
                               const Field<float>& mag, float scale) {
  for (const Field<float>* f : {&wx, &wy, &wz}) check_dims(*f, mag);
  const VorticityRowKernels& rows = vorticity_row_kernels();
  const int nx = mag.nx(), ny = mag.ny(), nz = mag.nz();
  const auto inside = [](int i, int n) { return i >= 2 && i < n - 2; };
#pragma omp parallel for schedule(static)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) {
      const std::size_t c = mag.index(0, j, k);
      const bool in_force = nx > 4 && inside(j, ny) && inside(k, nz);
      if (in_force)
        rows.confine(&wx[c + 2], &wy[c + 2], &wz[c + 2], &mag[c + 2], row_steps(mag), scale,
                     nx - 4);
      for (Field<float>* f : {&wx, &wy, &wz}) {
        float* row = f->data() + c;
        if (in_force) {
          std::fill_n(row, 2, 0.0f);
          std::fill_n(row + nx - 2, 2, 0.0f);
        } else {
          std::fill_n(row, nx, 0.0f);
        }
      }
    }
}

void add_center_force_to_mac(Field<float>& U, Field<float>& V, Field<float>& W,
                             const Field<float>& fx, const Field<float>& fy, const Field<float>& fz,
                             float c) {
  for (const Field<float>* f : {&fx, &fy, &fz}) check_mac(U, V, W, *f);
  const VorticityRowKernels& rows = vorticity_row_kernels();
  const int nx = fx.nx(), ny = fx.ny(), nz = fx.nz();
  if (nx < 5) return;
#pragma omp parallel for schedule(static)
  for (int k = 2; k < nz - 2; ++k)
    for (int j = 2; j < ny - 2; ++j) {
      const auto add = [&](float* u, const float* f, std::ptrdiff_t step) {
        rows.add_force(u, f, f - step, c, nx - 4);
      };
      add(&U(2, j, k), &fx(2, j, k), 1);
      add(&V(2, j, k), &fy(2, j, k), row_steps(fy).y);
      add(&W(2, j, k), &fz(2, j, k), row_steps(fz).z);
    }
}

void m_velocity_curl(MField& wx, MField& wy, MField& wz, MField& mag, MField& U, MField& V,
                     MField& W, float dx) {
  try_gpu(no_kernel, [&] {
    VelocityCurl(wx.overwrite_cpu(), wy.overwrite_cpu(), wz.overwrite_cpu(), mag.overwrite_cpu(),
                 U.read_cpu(), V.read_cpu(), W.read_cpu(), dx);
  });
}

void m_vorticity_confinement_force(MField& wx, MField& wy, MField& wz, MField& mag, float scale) {
  try_gpu(no_kernel, [&] {
    VorticityConfinementForce(wx.write_cpu(), wy.write_cpu(), wz.write_cpu(), mag.read_cpu(),
                              scale);
  });
}

void m_add_center_force_to_mac(MField& U, MField& V, MField& W, MField& fx, MField& fy, MField& fz,
                               float c) {
  try_gpu(no_kernel, [&] {
    add_center_force_to_mac(U.write_cpu(), V.write_cpu(), W.write_cpu(), fx.read_cpu(),
                            fy.read_cpu(), fz.read_cpu(), c);
  });
}

}  // namespace nbx
