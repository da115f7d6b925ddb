#include <algorithm>

#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

// Calls plane(k) for k = first .. end - 1. Visiting a border plane by plane keeps all threads at
// work and ends with a single barrier; the end of a row shares its cache line with the next row.
template <class Plane>
void for_planes(const Field<float>& f, int first, int end, Plane plane) {
#pragma omp parallel for schedule(static) if (f.count() > kSmallField)
  for (int k = first; k < end; ++k) plane(k);
}

}  // namespace

void set_border(Field<float>& f, float value, int layer) {
  const Vec3i n = f.dims();
  const auto outer = [&](int i, int axis) { return i == layer || i == n[axis] - 1 - layer; };
  for_planes(f, 0, n[2], [&](int k) {
    for (int j = 0; j < n[1]; ++j) {
      float* row = f.data() + f.index(0, j, k);
      if (outer(k, 2) || outer(j, 1)) {
        std::fill_n(row, n[0], value);
      } else if (layer < n[0]) {
        row[layer] = value;
        row[n[0] - 1 - layer] = value;
      }
    }
  });
}

void clamp_border(Field<float>& f) {
  if (std::min({f.nx(), f.ny(), f.nz()}) >= 3)
    return for_planes(f, 1, f.nz() - 1, [&](int k) { clamp_plane(f, k); });
  for (int axis = 0; axis < 3; ++axis) {
    const int n = f.dims()[axis];
    if (n < 2) continue;
    iterate_slice(f, axis, 0, 1, ClampBorderOper{});
    iterate_slice(f, axis, n - 1, n - 2, ClampBorderOper{});
  }
}

void m_set_border(MField& f, float value) {
  try_gpu(no_kernel, [&] { set_border(f.write_cpu(), value); });
}

}  // namespace nbx
