#include "host/render/surfaces/glow_grid.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace host {
namespace {

constexpr int kLongestSide = 24;  // cells

std::array<double, 3> ToArray(const Vector& v) { return {v.x, v.y, v.z}; }

}  // namespace

GlowGrid::GlowGrid(const Vector& low, const Vector& high,
                   const std::function<double(const Vector&, int, double)>& glow)
    : low_(ToArray(low)) {
  const std::array<double, 3> size = ToArray(high - low);
  const double longest = std::max({size[0], size[1], size[2]});
  if (!(longest > 0)) return;
  for (std::size_t a = 0; a < 3; ++a) {
    count_[a] = std::max(1, static_cast<int>(std::lround(kLongestSide * size[a] / longest)));
    edge_[a] = std::max(size[a] / count_[a], 1e-6 * longest);
  }
  for (int k = 0; k < count_[2]; ++k)
    for (int j = 0; j < count_[1]; ++j)
      for (int i = 0; i < count_[0]; ++i) {
        double sum = 0;
        for (int axis = 0; axis < 3; ++axis) {
          // Through the center of the cell, from side to side.
          std::array<double, 3> p{i + 0.5, j + 0.5, k + 0.5};
          p[axis] -= 0.5;
          const Vector from{low_[0] + p[0] * edge_[0], low_[1] + p[1] * edge_[1],
                            low_[2] + p[2] * edge_[2]};
          sum += glow(from, axis, edge_[axis]) / edge_[axis];
        }
        share_.push_back(std::isfinite(sum) ? std::max(sum, 0.0) : 0);
      }
  const double all = std::accumulate(share_.begin(), share_.end(), 0.0);
  if (!(all > 0)) {
    share_.clear();
    return;
  }
  for (double& share : share_) share /= all;
  std::partial_sum(share_.begin(), share_.end(), std::back_inserter(sum_));
}

Vector GlowGrid::Sample(double cell, double x, double y, double z) const {
  const auto found = std::upper_bound(sum_.begin(), sum_.end() - 1, cell * sum_.back());
  const int index = found - sum_.begin();
  const int i = index % count_[0], j = index / count_[0] % count_[1];
  const int k = index / (count_[0] * count_[1]);
  return {low_[0] + (i + x) * edge_[0], low_[1] + (j + y) * edge_[1], low_[2] + (k + z) * edge_[2]};
}

double GlowGrid::Density(const Vector& point, const Vector& direction) const {
  // The ray is inside the box from r = enter to r = leave.
  const std::array<double, 3> o = ToArray(point), d = ToArray(direction);
  double enter = 0, leave = INFINITY;
  for (std::size_t a = 0; a < 3; ++a) {
    const double t0 = (low_[a] - o[a]) / d[a], t1 = (low_[a] + count_[a] * edge_[a] - o[a]) / d[a];
    enter = std::fmax(enter, std::fmin(t0, t1));
    leave = std::fmin(leave, std::fmax(t0, t1));
  }
  if (!(leave > enter)) return 0;
  std::array<int, 3> cell{};
  std::array<double, 3> next{};
  for (std::size_t a = 0; a < 3; ++a) {
    const double x = (o[a] + d[a] * enter - low_[a]) / edge_[a];
    cell[a] = std::clamp(static_cast<int>(x), 0, count_[a] - 1);
    const double side = low_[a] + (cell[a] + (d[a] > 0 ? 1 : 0)) * edge_[a];
    next[a] = d[a] == 0 ? INFINITY : (side - o[a]) / d[a];
  }
  // Points with volume density p have the directional density: integral of p r^2 dr.
  double sum = 0, r = enter;
  while (r < leave) {
    const std::size_t a = std::min_element(next.begin(), next.end()) - next.begin();
    const double to = std::clamp(next[a], r, leave);
    sum += share_[Index(cell)] * (to * to * to - r * r * r);
    r = to;
    cell[a] += d[a] > 0 ? 1 : -1;
    if (cell[a] < 0 || cell[a] >= count_[a]) break;
    next[a] += edge_[a] / std::abs(d[a]);
  }
  return sum / (3 * edge_[0] * edge_[1] * edge_[2]);
}

}  // namespace host
