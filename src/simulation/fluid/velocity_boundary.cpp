// The boundary of the velocity. On the axis of a component the walls lie on its own samples:
//
//        0    1    2   ..  n-3  n-2  n-1      index of the face
//        |  o |  o |  o      |  o |  o |      o: cells, the outermost ones are ghosts
//             ^ low wall          ^ high wall
#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

std::array<int, 6> closed_faces(const SimSettings& settings) {
  std::array<int, 6> closed{};
  for (int axis = 0; axis < 3; ++axis) {
    const auto low = static_cast<std::size_t>(2 * axis), high = low + 1;
    const bool at_low = settings.active_box.lo[axis] == 0;
    const bool at_high = settings.active_box.hi[axis] >= settings.domain_box.hi[axis];
    closed[low] = at_low && settings.face_closed[low] == 1;
    closed[high] = at_high && settings.face_closed[high] == 1;
  }
  return closed;
}

namespace {

// The four edges along `axis`, corners included.
void set_edge(Field<float>& f, int axis, float value) {
  const int b = (axis + 1) % 3, c = (axis + 2) % 3;
  const Vec3i n = f.dims();
  Vec3i at;
  for (const int high_b : {0, 1})
    for (const int high_c : {0, 1}) {
      at[b] = high_b * (n[b] - 1);
      at[c] = high_c * (n[c] - 1);
      for (at[axis] = 0; at[axis] < n[axis]; ++at[axis]) f(at[0], at[1], at[2]) = value;
    }
}

void velocity_boundary(Field<float>& f, int axis, const SimSettings& settings) {
  if (f.count() == 0) return;
  if (settings.wind_speed > 0) {
    set_border(f, static_cast<float>(settings.wind_direction[axis] * settings.wind_speed));
    return;
  }
  const int n = f.dims()[axis];
  const std::array<int, 6> closed = closed_faces(settings);
  const auto low = static_cast<std::size_t>(2 * axis), high = low + 1;
  if (closed[low] && n >= 2) iterate_slice(f, axis, 1, SetBorderOper{0});
  if (closed[high] && n >= 2) iterate_slice(f, axis, n - 2, SetBorderOper{0});
  clamp_border(f);
  iterate_slice(f, axis, 0, Min0Oper{});
  iterate_slice(f, axis, n - 1, Max0Oper{});
  for (int a = 0; a < 3; ++a) set_edge(f, a, 0);
}

}  // namespace

void VelocityBoundaryU(Field<float>& U, const SimSettings& settings) {
  velocity_boundary(U, 0, settings);
}
void VelocityBoundaryV(Field<float>& V, const SimSettings& settings) {
  velocity_boundary(V, 1, settings);
}
void VelocityBoundaryW(Field<float>& W, const SimSettings& settings) {
  velocity_boundary(W, 2, settings);
}

void m_velocity_boundary(int axis, MField& component, const SimSettings& settings) {
  try_gpu(no_kernel, [&] { velocity_boundary(component.write_cpu(), axis, settings); });
}

}  // namespace nbx
