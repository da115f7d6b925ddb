// A coarse map of a proximity field, small enough to stay in the cache. Inside of the gas it
// answers at once what would otherwise take a look-up of the field at every block of samples.
#pragma once

#include <cstdint>
#include <vector>

#include "math/field.h"
#include "math/vector.h"

namespace nbx {

/// Immutable. A brick is "near" if the proximity is nowhere above 0 between its points. The map
/// stays valid if the field is lowered.
class NearBricks {
 public:
  NearBricks() = default;  // no brick is near
  explicit NearBricks(const Field<float>& proximity);

  /// True only if trilinear look-up at the point, in cells of the field, gives at most 0.
  bool contains(const Vec3f& point) const {
    int brick[3];
    for (int axis = 0; axis < 3; ++axis) {
      if (!(point[axis] >= 0 && point[axis] < last_[axis])) return false;
      brick[axis] = static_cast<int>(point[axis]) / kEdge;
    }
    return near_[brick[0] + count_[0] * (brick[1] + std::size_t(count_[1]) * brick[2])] != 0;
  }

 private:
  static constexpr int kEdge = 4;  // cells
  Vec3f last_{0, 0, 0};            // index of the last cell of each axis
  Vec3i count_{0, 0, 0};
  std::vector<std::uint8_t> near_;
};

}  // namespace nbx
