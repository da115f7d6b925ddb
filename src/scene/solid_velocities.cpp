#include "scene/solid_velocities.h"

#include <cmath>

#include "math/field_checks.h"
#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

namespace {

struct SolidCells {
  const Field<float>& phi;
  std::span<const std::int32_t> ids;
  std::span<const Vec3f> velocities;

  /// The vertex that moves the face between the cells a and b: the one of the cell nearer to the
  /// surface, or the only one.
  std::int32_t vertex(std::size_t a, std::size_t b) const {
    if (phi[a] > 0 && phi[b] > 0) return -1;
    if (ids[a] < 0) return ids[b];
    return ids[b] >= 0 && std::abs(phi[a]) > std::abs(phi[b]) ? ids[b] : ids[a];
  }
};

void iterate_solid_velocities(Field<float>& f, int axis, const SolidCells& cells) {
  const Field<float>& phi = cells.phi;
  Vec3i back, end = phi.dims() - Vec3i(1, 1, 1);  // of the cells behind an inner face
  back[axis] = 1;
  ++end[axis];
  const std::int32_t count = cells.velocities.size();
#pragma omp parallel for schedule(static)
  for (int k = 1; k < end[2]; ++k)
    for (int j = 1; j < end[1]; ++j)
      for (int i = 1; i < end[0]; ++i) {
        const std::int32_t id =
            cells.vertex(phi.index(i - back[0], j - back[1], k - back[2]), phi.index(i, j, k));
        f(i, j, k) = id >= 0 && id < count ? cells.velocities[id][axis] : 0.0f;
      }
}

/// The outer planes across the axis take the plane before them where it flows out of the grid. The
/// other sides are at rest.
void set_outer_planes(Field<float>& f, int axis) {
  clamp_border(f);
  iterate_slice(f, axis, 0, Min0Oper{});
  iterate_slice(f, axis, f.dims()[axis] - 1, Max0Oper{});
  for (int side = 0; side < 3; ++side)
    if (side != axis)
      for (const int at : {0, f.dims()[side] - 1}) iterate_slice(f, side, at, SetBorderOper{0});
}

}  // namespace

void set_solid_velocities(Field<float>& u, Field<float>& v, Field<float>& w,
                          const Field<float>& phi, std::span<const std::int32_t> ids,
                          std::span<const Vec3f> vertex_velocities) {
  check_mac(u, v, w, phi);
  const SolidCells cells{phi, ids, vertex_velocities};
  Field<float>* faces[] = {&u, &v, &w};
  for (int axis = 0; axis < 3; ++axis) {
    iterate_solid_velocities(*faces[axis], axis, cells);
    set_outer_planes(*faces[axis], axis);
  }
}

}  // namespace nbx
