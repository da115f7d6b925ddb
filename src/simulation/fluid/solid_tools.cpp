// How solids act on velocity and channels.
#include <vector>

#include "math/field_checks.h"
#include "math/interpolation.h"
#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"
#include "util/shared_loop.h"

namespace nbx {

namespace {

// The search for a surface ends at about 3.46 voxels.
constexpr float kDeepest = -12.0f;

// U = Us on the faces of this row that have solid on either side. The cell across a face lies
// `step` before.
void constrain_row(float* U, const float* Us, const float* phi, std::ptrdiff_t step, int count) {
  const float* before = phi - step;
  for (int i = 0; i < count; ++i) U[i] = ((phi[i] <= 0) | (before[i] <= 0)) ? Us[i] : U[i];
}

// Per row j + ny k, whether it has a cell in solid.
std::vector<char> rows_with_solid(const Field<float>& phi) {
  const int ny = phi.ny(), nz = phi.nz();
  std::vector<char> rows(std::size_t{1} * ny * nz);
#pragma omp parallel for schedule(static) if (phi.count() > kSmallField)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) {
      const float* row = &phi(0, j, k);
      int solid = 0;
      for (int i = 0; i < phi.nx(); ++i) solid |= static_cast<int>(row[i] <= 0);
      rows[std::size_t{1} * k * ny + j] = static_cast<char>(solid);
    }
  return rows;
}

// The weighted mean of the channel at `at` over the corners in fluid; `value` if there are none.
float mean_over_fluid(const Field<float>& phi, const Field<float>& channel, const Vec3f& at,
                      float value) {
  const CellCoordinates c = linear_cell(channel, at[0], at[1], at[2]);
  float weights = 0, sum = 0;
  for (int corner = 0; corner < 8; ++corner) {
    const int di = corner & 1, dj = corner >> 1 & 1, dk = corner >> 2;
    if (!(phi(c.i + di, c.j + dj, c.k + dk) > 0)) continue;
    const float w = (di ? c.tx : 1 - c.tx) * (dj ? c.ty : 1 - c.ty) * (dk ? c.tz : 1 - c.tz);
    weights += w;
    sum += w * channel(c.i + di, c.j + dj, c.k + dk);
  }
  return weights > 0 ? sum / weights : value;
}

// The channel at the point of the surface nearest to a cell in solid. The distance s = sqrt(|phi|)
// grows inwards, so that point lies s(c) against its gradient.
float value_at_surface(const Field<float>& phi, const Field<float>& channel, int i, int j, int k,
                       float value) {
  if (phi(i, j, k) <= kDeepest) return value;
  const auto s = [&](int a, int b, int c) { return std::sqrt(std::abs(phi(a, b, c))); };
  const Vec3f g = normalized(Vec3f(s(i + 1, j, k) - s(i - 1, j, k), s(i, j + 1, k) - s(i, j - 1, k),
                                   s(i, j, k + 1) - s(i, j, k - 1)));
  return mean_over_fluid(phi, channel, Vec3f(i, j, k) - g * s(i, j, k), value);
}

}  // namespace

void constrainBoundaryVelocityT(const Field<float>& phi, const Field<float>& Us,
                                const Field<float>& Vs, const Field<float>& Ws, Field<float>& U,
                                Field<float>& V, Field<float>& W) {
  check_mac(U, V, W, phi);
  check_mac(Us, Vs, Ws, phi);
  const int nx = phi.nx(), ny = phi.ny(), nz = phi.nz();
  const std::ptrdiff_t row = nx, plane = row * ny;
  const std::vector<char> rows = rows_with_solid(phi);
  // The last layer of each component has its own index n - 1 and lies on the last interior cell.
#pragma omp parallel for schedule(static) if (phi.count() > kSmallField)
  for (int k = 1; k < nz; ++k)
    for (int j = 1; j < ny; ++j) {
      const float* c = &phi(1, j, k);
      const std::size_t u = U.index(1, j, k), v = V.index(1, j, k), w = W.index(1, j, k);
      const bool inner_j = j < ny - 1, inner_k = k < nz - 1;
      const char* solid = &rows[std::size_t{1} * k * ny + j];
      if (inner_j && inner_k && solid[0]) constrain_row(U.data() + u, Us.data() + u, c, 1, nx - 1);
      if (inner_k && (solid[0] || solid[-1]))
        constrain_row(V.data() + v, Vs.data() + v, c, row, nx - 2);
      if (inner_j && (solid[0] || solid[-ny]))
        constrain_row(W.data() + w, Ws.data() + w, c, plane, nx - 2);
    }
}

void set_channel_inside_solid(const Field<float>& phi, Field<float>& channel, bool extrapolate,
                              float value) {
  check_dims(phi, channel);
  const int nx = phi.nx(), ny = phi.ny(), nz = phi.nz();
  // Only cells in solid are written and only corners in fluid are read.
  shared_loop(1, nz - 1, phi.count() > kSmallField, [&](int k) {
    for (int j = 1; j < ny - 1; ++j)
      for (int i = 1; i < nx - 1; ++i)
        if (phi(i, j, k) <= 0)
          channel(i, j, k) = extrapolate ? value_at_surface(phi, channel, i, j, k, value) : value;
  });
}

void m_set_channel_inside_solid(MField& phi, MField& channel, bool extrapolate, float value) {
  try_gpu(no_kernel, [&] {
    set_channel_inside_solid(phi.read_cpu(), channel.write_cpu(), extrapolate, value);
  });
}

}  // namespace nbx
