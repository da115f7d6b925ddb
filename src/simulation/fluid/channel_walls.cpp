#include "simulation/fluid/channel_walls.h"

#include <algorithm>

#include "simulation/field_planes.h"

namespace nbx {

std::array<bool, 6> channel_walls(const Domain& domain) {
  std::array<bool, 6> walls{};
  if (domain.wind.speed > 0) return walls;
  const std::array<int, 6> closed = domain.closed_faces();
  std::transform(closed.begin(), closed.end(), walls.begin(), [](int c) { return c != 0; });
  return walls;
}

void extend_to_walls(Field<float>& channel, const Domain& domain) {
  const std::array<bool, 6> walls = channel_walls(domain);
  for (int face = 0; face < 6; ++face) {
    const int axis = face / 2, n = channel.dims()[axis];
    if (!walls[face] || n < 3) continue;
    const bool high = face % 2;
    iterate_slice(channel, axis, high ? n - 1 : 0, high ? n - 2 : 1, ClampBorderOper{});
  }
}

}  // namespace nbx
