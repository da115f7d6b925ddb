#include "simulation/fluid/curl_noise.h"

#include "math/field_checks.h"
#include "simulation/fluid/vorticity_row_kernels.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

// The three operators set the faces behind the last interior cells, so that what enters such a cell
// through its other faces leaves through this one. Their order matters: in a cell at an edge of the
// grid, the last of its faces corrects the sum.

void DivFreeUBoundary(Field<float>& U, const Field<float>& V, const Field<float>& W) {
  const int i = W.nx() - 2, ny = W.ny(), nz = V.nz();
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j)
      U(i + 1, j, k) = U(i, j, k) - V(i, j + 1, k) + V(i, j, k) - W(i, j, k + 1) + W(i, j, k);
}

void DivFreeVBoundary(const Field<float>& U, Field<float>& V, const Field<float>& W) {
  const int nx = W.nx(), j = W.ny() - 2, nz = V.nz();
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int i = 1; i < nx - 1; ++i)
      V(i, j + 1, k) = V(i, j, k) - U(i + 1, j, k) + U(i, j, k) - W(i, j, k + 1) + W(i, j, k);
}

void DivFreeWBoundary(const Field<float>& U, const Field<float>& V, Field<float>& W) {
  const int nx = W.nx(), ny = W.ny(), k = V.nz() - 2;
#pragma omp parallel for schedule(static)
  for (int j = 1; j < ny - 1; ++j)
    for (int i = 1; i < nx - 1; ++i)
      W(i, j, k + 1) = W(i, j, k) - U(i + 1, j, k) + U(i, j, k) - V(i, j + 1, k) + V(i, j, k);
}

}  // namespace

void add_curl_of_scaled(Field<float>& U, Field<float>& V, Field<float>& W, const Field<float>& psi,
                        const Field<float>* map, float scale) {
  check_mac(U, V, W, psi);
  if (map) check_dims(*map, psi);
  const int nx = psi.nx(), ny = psi.ny(), nz = psi.nz();
  if (nx < 3 || ny < 3 || nz < 3) return;
  const VorticityRowKernels& rows = vorticity_row_kernels();
  const auto add_curl = map ? rows.add_mapped_curl : rows.add_curl;
  const Field<float>& scales = map ? *map : psi;  // not read without a map
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j) {
      const int my = ny - 1 - j, mz = nz - 1 - k;
      const PotentialRow row{
          &psi(nx - 2, j, k), &psi(nx - 2, j + 1, k), &psi(nx - 2, j, k + 1),
          &psi(1, my, k),     &psi(1, my, k + 1),     &psi(1, j, mz),
          &psi(1, j + 1, mz), &scales(1, j, k),       {nx, std::ptrdiff_t{nx} * ny}};
      add_curl(&U(1, j, k), &V(1, j, k), &W(1, j, k), row, scale, nx - 2);
    }
  DivFreeUBoundary(U, V, W);
  DivFreeVBoundary(U, V, W);
  DivFreeWBoundary(U, V, W);
}

void m_add_curl_of_scaled(MField& U, MField& V, MField& W, MField& psi, MField* map, float scale) {
  try_gpu(no_kernel, [&] {
    add_curl_of_scaled(U.write_cpu(), V.write_cpu(), W.write_cpu(), psi.read_cpu(),
                       map ? &map->read_cpu() : nullptr, scale);
  });
}

}  // namespace nbx
