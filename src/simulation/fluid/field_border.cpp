#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

// Planes share their edges, so they run one after the other.
void set_border(Field<float>& f, float value, int layer) {
  for (int axis = 0; axis < 3; ++axis) {
    const int n = f.dims()[axis];
    if (layer >= n) continue;
    iterate_slice(f, axis, layer, SetBorderOper{value});
    iterate_slice(f, axis, n - 1 - layer, SetBorderOper{value});
  }
}

void clamp_border(Field<float>& f) {
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
