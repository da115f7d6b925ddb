// The boundary of the velocity. Walls across the axis of a component lie on its own samples:
//
//        0    1    2   ..  n-3  n-2  n-1      index of the face
//        |  o |  o |  o      |  o |  o |      o: cells, the outermost ones are ghosts
//             ^ low wall          ^ high wall
#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

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

void velocity_boundary(Field<float>& f, int axis, const Domain& domain) {
  if (f.count() == 0) return;
  if (domain.wind.speed > 0) {
    set_border(f, domain.wind.velocity()[axis]);
    return;
  }
  const int n = f.dims()[axis];
  const std::array<int, 6> closed = domain.closed_faces();
  const int low = 2 * axis, high = low + 1;
  if (closed[low] && n >= 2) iterate_slice(f, axis, 1, SetBorderOper{0});
  if (closed[high] && n >= 2) iterate_slice(f, axis, n - 2, SetBorderOper{0});
  clamp_border(f);
  iterate_slice(f, axis, 0, Min0Oper{});
  iterate_slice(f, axis, n - 1, Max0Oper{});
  for (int a = 0; a < 3; ++a) set_edge(f, a, 0);
}

}  // namespace

void VelocityBoundaryU(Field<float>& U, const Domain& domain) { velocity_boundary(U, 0, domain); }
void VelocityBoundaryV(Field<float>& V, const Domain& domain) { velocity_boundary(V, 1, domain); }
void VelocityBoundaryW(Field<float>& W, const Domain& domain) { velocity_boundary(W, 2, domain); }

void m_velocity_boundary(int axis, MField& component, const Domain& domain) {
  try_gpu(no_kernel, [&] { velocity_boundary(component.write_cpu(), axis, domain); });
}

}  // namespace nbx
