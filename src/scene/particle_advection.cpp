#include "scene/particle_advection.h"

#include <algorithm>
#include <cmath>

#include "cache/grid_type.h"
#include "math/interpolation.h"

namespace nbx {

namespace {

// Longer paths, in cells, are cut.
constexpr int kMostRounds = 10000;

constexpr int kTypes[3] = {kGridVelocityX, kGridVelocityY, kGridVelocityZ};

/// From the world of the host to cells: the matrix of a frame works on row vectors with z negated.
Affine3d cell_transform(const FrameGrid& grid) {
  const auto entry = [&](int row, int column) { return grid.gridMatrix[4 * row + column]; };
  Affine3d m;
  for (int a = 0; a < 3; ++a) {
    m.rows[a] = {entry(0, a), entry(1, a), -entry(2, a)};
    m.translation[a] = entry(3, a) - grid.offset[a];
  }
  return m;
}

}  // namespace

ParticleAdvection::ParticleAdvection(SimFrame& frame, double unit_scale) {
  for (const int type : kTypes)
    if (!frame.grids.contains(type)) return;
  const FrameGrid& grid = frame.grids.at(kTypes[0]);
  to_cells_ = cell_transform(grid);
  to_world_ = inverse(to_cells_);
  std::array<FieldHandle, 3> fields;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    fields[axis] = frame.grid(kTypes[axis]);
    if (!fields[axis]) return;
  }
  cells_ = fields[0]->dims() - Vec3i(1, 0, 0);
  const double cells_per_meter = length(to_cells_.rows[0]) / unit_scale;
  const double document = frame.frameTime.length.value();
  const double clock = document > 0 ? frame.simTime.length.value() / document : 1;
  cells_per_second_ = cells_per_meter * clock;
  fields_ = std::move(fields);
}

Vec3d ParticleAdvection::velocity(const Vec3d& x) const {
  Vec3d v;
  for (int axis = 0; axis < 3; ++axis) {
    Vec3f at = vector_cast<float>(x);
    at[axis] += 0.5f;  // the faces of an axis lie half a cell lower on it
    v[axis] = sample_linear(*fields_[axis], at[0], at[1], at[2]);
  }
  return v;
}

// In steps of one cell; the last two share what is left:
//
//     x += h v(x),  h = 1 / max |v|
bool ParticleAdvection::trace(Vec3d& moved, const Vec3d& position, double seconds) const {
  const Vec3d start = to_cells_(position);
  for (int a = 0; a < 3; ++a)
    if (!(start[a] >= 1 && start[a] < cells_[a] - 1)) return false;

  Vec3d x = start;
  double left = seconds * cells_per_second_;
  for (int round = 0; left > 0 && round < kMostRounds; ++round) {
    const Vec3d v = velocity(x);
    const double fastest = std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
    double h = 1 / (fastest > 0 ? fastest : 1.1920929e-7);
    if (!std::isfinite(fastest)) return false;
    if (!(h < left))
      h = left;
    else if (2 * h > left)
      h = left / 2;
    x += v * h;
    left -= h;
  }
  moved = to_world_.linear(x - start);
  return true;
}

}  // namespace nbx
