#include "render/march/near_bricks.h"

#include <algorithm>

namespace nbx {

NearBricks::NearBricks(const Field<float>& proximity) {
  const Vec3i n = proximity.dims();
  for (int axis = 0; axis < 3; ++axis) {
    last_[axis] = n[axis] - 1;
    count_[axis] = (n[axis] + kEdge - 1) / kEdge;
  }
  near_.resize(std::size_t(count_[0]) * count_[1] * count_[2]);
#pragma omp parallel for collapse(2) schedule(static)
  for (int c = 0; c < count_[2]; ++c)
    for (int b = 0; b < count_[1]; ++b) {
      std::uint8_t* row = &near_[count_[0] * (b + std::size_t(count_[1]) * c)];
      std::fill_n(row, count_[0], std::uint8_t{1});
      // Look-ups in a brick also read the first points of the next one.
      bool any = true;
      for (int k = kEdge * c; any && k <= std::min(kEdge * (c + 1), n[2] - 1); ++k)
        for (int j = kEdge * b; any && j <= std::min(kEdge * (b + 1), n[1] - 1); ++j) {
          any = false;
          for (int a = 0; a < count_[0]; ++a) {
            if (row[a] == 0) continue;
            const float* p = &proximity(kEdge * a, j, k);
            const int points = std::min(kEdge + 1, n[0] - kEdge * a);
            bool near = true;
            for (int i = 0; i < points; ++i) near &= p[i] <= 0;
            row[a] = near;
            any |= near;
          }
        }
    }
}

}  // namespace nbx
