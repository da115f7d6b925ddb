#include "simulation/fluid/conservation.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "math/field_checks.h"
#include "simulation/fluid/channel_walls.h"
#include "simulation/fluid/conservation_kernels.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"
#include "util/isa.h"

NBX_DECLARE_ISA(ConservationKernels, kConservationKernels)

namespace nbx {

const ConservationKernels& conservation_kernels() { return NBX_SELECT_ISA(kConservationKernels); }

namespace {

// Calls of_row(j, k, scratch) for the interior rows and adds up the results: those of a plane, then
// the planes in order. `scratch` has room for a row.
template <class OfRow>
double sum_rows(const Vec3i& n, const OfRow& of_row) {
  if (std::min({n[0], n[1], n[2]}) < 3) return 0;
  std::vector<double> planes(n[2]);
#pragma omp parallel
  {
    std::vector<float> scratch(n[0]);
#pragma omp for schedule(static)
    for (int k = 1; k < n[2] - 1; ++k)
      for (int j = 1; j < n[1] - 1; ++j) planes[k] += of_row(j, k, scratch.data());
  }
  double total = 0;
  for (const double plane : planes) total += plane;
  return total;
}

double total_inside(const Field<float>& f) {
  const auto sum = conservation_kernels().sum;
  return sum_rows(f.dims(), [&](int j, int k, float*) { return sum(&f(1, j, k), f.nx() - 2); });
}

// The gas in the column of cells that lies behind the face `at` of an outermost cell, as deep as
// the face sweeps it.
double swept(const Field<float>& channel, Vec3i at, int axis, bool high, double depth) {
  const int inner = channel.dims()[axis] - 2;
  double gas = 0;
  for (at[axis] = high ? inner : 1; depth > 0 && at[axis] >= 1 && at[axis] <= inner;
       at[axis] += high ? -1 : 1) {
    gas += std::min(depth, 1.0) * channel(at[0], at[1], at[2]);
    depth -= 1;
  }
  return gas;
}

}  // namespace

double outflow(const Field<float>& channel, const Sweep& sweep, const Domain& domain) {
  const Field<float>* const components[3] = {&sweep.U, &sweep.V, &sweep.W};
  const std::array<bool, 6> walls = channel_walls(domain);
  const Vec3i n = channel.dims();
  double leaves = 0;
  for (int face = 0; face < 6; ++face) {
    if (walls[face]) continue;
    const int axis = face / 2, b = (axis + 1) % 3, c = (axis + 2) % 3;
    const bool high = face % 2;
    const double outward = high ? sweep.step : -sweep.step;
    Vec3i at;
    at[axis] = high ? n[axis] - 1 : 1;
    for (at[c] = 1; at[c] < n[c] - 1; ++at[c])
      for (at[b] = 1; at[b] < n[b] - 1; ++at[b])
        leaves +=
            swept(channel, at, axis, high, outward * (*components[axis])(at[0], at[1], at[2]));
  }
  return leaves;
}

double thin_by_expansion(Field<float>& channel, const Sweep& sweep) {
  const Field<float>&U = sweep.U, &V = sweep.V, &W = sweep.W;
  const auto step = static_cast<float>(sweep.step);
  const ConservationKernels& kernels = conservation_kernels();
  const int n = channel.nx() - 2;
  return sum_rows(channel.dims(), [&](int j, int k, float*) {
    float* const row = &channel(1, j, k);
    const double before = kernels.sum(row, n);
    if (before == 0) return before;  // empty air
    kernels.thin(row, &U(1, j, k), &V(1, j, k), &V(1, j + 1, k), &W(1, j, k), &W(1, j, k + 1), step,
                 n);
    return before;
  });
}

void correct_total(Field<float>& dst, Field<float>& moved, double total) {
  check_dims(dst, moved);
  // So no cell of the border sees anything beyond it.
  clamp_border(moved);
  const double defect = total - total_inside(moved);
  const ConservationKernels& kernels = conservation_kernels();
  const auto room = kernels.room[defect > 0];
  const std::ptrdiff_t row = moved.nx(), plane = row * moved.ny();
  const int n = moved.nx() - 2;
  const double most = sum_rows(moved.dims(), [&](int j, int k, float* scratch) {
    room(scratch, &moved(1, j, k), row, plane, n);
    return kernels.sum(scratch, n);
  });
  // Without room, or with values that aren't finite, nothing can be corrected.
  const bool possible = most > 0 && std::isfinite(defect / most);
  const float a = possible ? static_cast<float>(std::clamp(defect / most, -1.0, 1.0)) : 0;
  sum_rows(moved.dims(), [&](int j, int k, float*) {
    const float* const from = &moved(1, j, k);
    float* const to = &dst(1, j, k);
    room(to, from, row, plane, n);
    for (int i = 0; i < n; ++i) to[i] = from[i] + a * to[i];
    return 0.0;
  });
  set_border(dst, 0.0f);
}

void advect_conserving(MField& field, AdvectionParams& params) {
  double total = 0;
  try_gpu(no_kernel, [&] {
    const Sweep sweep{params.velocity[0]->read_cpu(), params.velocity[1]->read_cpu(),
                      params.velocity[2]->read_cpu(), params.dt / params.dx};
    Field<float>& channel = field.write_cpu();
    check_mac(sweep.U, sweep.V, sweep.W, channel);
    const double leaves = outflow(channel, sweep, *params.domain);
    total = std::max(thin_by_expansion(channel, sweep) - leaves, 0.0);
  });
  MField moved(thread_location(), field.dims());
  advect(moved, field, params);
  try_gpu(no_kernel,
          [&] { correct_total(field.overwrite_cpu(moved.dims()), moved.write_cpu(), total); });
}

void displace_by_solids(MField& field, MField& own, MField& phi) {
  m_set_channel_inside_solid(phi, field, false, 0);
  try_gpu(no_kernel, [&] {
    Field<float>& gas = own.write_cpu();
    double displaced = total_inside(gas);
    set_channel_inside_solid(phi.read_cpu(), gas, false, 0);
    displaced -= total_inside(gas);
    if (displaced == 0) return;
    Field<float>& outside = field.write_cpu();
    correct_total(gas, outside, total_inside(outside) + displaced);
    field.swap(own);
  });
}

}  // namespace nbx
