#include "simulation/domain.h"

namespace nbx {

Vec3i Domain::face_dims(int axis) const {
  Vec3i dims = center_dims();
  dims[axis] += 1;
  return dims;
}

std::array<int, 6> Domain::closed_faces() const {
  std::array<int, 6> closed{};
  for (int axis = 0; axis < 3; ++axis) {
    const int low = 2 * axis, high = low + 1;
    const bool at_low = active_box.lo[axis] == 0;
    const bool at_high = active_box.hi[axis] >= domain_box.hi[axis];
    closed[low] = at_low && face_closed[low] == 1;
    closed[high] = at_high && face_closed[high] == 1;
  }
  return closed;
}

}  // namespace nbx
