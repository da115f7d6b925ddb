#include "render/light/sweep_rays.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace nbx {

std::vector<Vec3d> face_directions(const Face& face, int per_side) {
  std::vector<Vec3d> directions;
  for (int n = 0; n < per_side * per_side; ++n) {
    const double alpha = (2 * (n / per_side + 0.5) / per_side - 1) * std::numbers::pi / 4;
    const double beta = (2 * (n % per_side + 0.5) / per_side - 1) * std::numbers::pi / 4;
    const double a = std::sin(beta) * std::cos(alpha);
    const double b = std::sin(alpha) * std::cos(beta);
    const double c = std::sqrt(1 - a * a - b * b);
    Vec3d direction{a, b, face.sign * c};
    std::swap(direction[2], direction[face.axis]);
    directions.push_back(direction);
  }
  return directions;
}

std::array<RaySegment, 3> slab_segments(const Vec3d& direction, const Face& face, int planes,
                                        int depth, double cell_length) {
  // All distances are along the ray, in cells.
  const double start = depth / std::abs(direction[face.axis]);
  // The cell at the start, and the distances to the next wall on each axis. A start on a wall, give
  // or take 1e-6 cells, lies in the cell behind it.
  Vec3i cell{0, 0, 0};
  Vec3d crossing{0, 0, 0};
  for (int axis = 0; axis < 3; ++axis) {
    const double origin = axis != face.axis ? 0.5 : face.sign > 0 ? 0.0 : planes;
    const double d = direction[axis];
    const double x = origin + start * d;
    if (d >= 0) {
      crossing[axis] = d > 0 ? start + (std::floor(x + 1.000001) - x) / d
                             : std::numeric_limits<double>::infinity();
      cell[axis] = std::floor(x + 1e-6);
    } else {
      crossing[axis] = start + (std::ceil(x - 1.000001) - x) / d;
      cell[axis] = std::floor(x - 1e-6);
    }
  }
  std::array<int, 3> order{0, 1, 2};
  std::sort(order.begin(), order.end(), [&](int a, int b) { return crossing[a] < crossing[b]; });

  // Walk from wall to wall, until the ray leaves the slab. It crosses a lateral axis at most once.
  std::array<RaySegment, 3> segments;
  double last = start;
  for (int n = 0; n < 3 && crossing[face.axis] > last; ++n) {
    const int axis = order[n];
    segments[n] = {cell, (crossing[axis] - last) * cell_length};
    last = crossing[axis];
    cell[axis] += direction[axis] < 0 ? -1 : 1;
  }
  return segments;
}

}  // namespace nbx
