#include "simulation/fluid/occupancy.h"

#include <algorithm>

#include "simulation/field_planes.h"
#include "simulation/fluid/advection_kernels.h"

namespace nbx {

Occupancy::Occupancy(const Field<float>& f)
    : segments_((f.nx() + NearMarks::kSegment - 1) / NearMarks::kSegment), ny_(f.ny()) {
  const int nz = f.nz();
  of_.resize(std::size_t{1} * segments_ * ny_ * nz);
  const auto mark = advection_kernels().mark;
  std::uint8_t all = kNothing;
#pragma omp parallel for schedule(static) reduction(| : all) if (f.count() > kSmallField)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny_; ++j) all |= mark(&of_[index(0, j, k)], &f(0, j, k), f.nx());
  empty_ = all == kNothing;
  sum_up(nz);
}

// Axis by axis: each mark joins those from `back` before it to `ahead` after it.
void Occupancy::sum_up(int nz) {
  near_ = of_;
  std::vector<std::uint8_t> before;
  const auto join = [&](int axis, int back, int ahead) {
    before = near_;
    const int most[3] = {segments_ - 1, ny_ - 1, nz - 1};
#pragma omp parallel for schedule(static) if (before.size() > kSmallField)
    for (int k = 0; k < nz; ++k)
      for (int j = 0; j < ny_; ++j)
        for (int d = -back; d <= ahead; ++d) {
          if (d == 0) continue;
          Vec3i from(0, j, k);
          from[axis] += d;
          if (from[axis] < 0 || from[axis] > most[axis]) continue;
          const std::uint8_t* marks = &before[index(from[0], from[1], from[2])];
          std::uint8_t* joined = &near_[index(0, j, k)];
          for (int s = 0; s < segments_ - from[0]; ++s) joined[s] |= marks[s];
        }
  };
  join(0, 0, NearMarks::kSegments - 1);
  join(1, NearMarks::kBack, NearMarks::kAhead);
  join(2, NearMarks::kBack, NearMarks::kAhead);
}

}  // namespace nbx
