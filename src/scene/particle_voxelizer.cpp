#include "scene/particle_voxelizer.h"

#include <algorithm>

namespace nbx {

namespace {

/// The number of blocks that a box touches.
std::size_t blocks(const IntBox& box) {
  std::size_t n = 1;
  for (int a = 0; a < 3; ++a) n *= (box.hi[a] >> 3) - (box.lo[a] >> 3) + 1;
  return n;
}

std::array<const float*, 3> vector_columns(const ParticleTable& table, const std::string& name) {
  std::array<const float*, 3> columns{table.column(name + ".x"), table.column(name + ".y"),
                                      table.column(name + ".z")};
  for (const float* column : columns)
    if (!column) return {};
  return columns;
}

}  // namespace

ParticleSpheres::ParticleSpheres(const ParticleTable& table,
                                 const SimulationObjectParameters& parameters, const IntBox& box)
    : parameters_(parameters),
      box_(box),
      radius_(parameters.thickness),
      active_(table.column("active")),
      position_(vector_columns(table, "position")),
      velocity_(vector_columns(table, "velocity")) {
  if (active_ && position_[0] && !box.empty()) rows_ = table.rows();
  switch (parameters.particle_map) {
    case ParticleMap::kAge:
      mapped_ = table.column("age");
      break;
    case ParticleMap::kSize:
      mapped_ = table.column("size");
      break;
    case ParticleMap::kMass:
      mapped_ = table.column("mass");
      break;
    case ParticleMap::kSpeed:
      by_speed_ = velocity_[0] != nullptr;
      break;
    case ParticleMap::kNone:
      break;
  }
}

IntBox ParticleSpheres::cells(std::ptrdiff_t row, Vec3d& center) const {
  if (active_[row] == 0) return {};
  center =
      parameters_.world_to_grid(Vec3d(position_[0][row], position_[1][row], position_[2][row]));
  IntBox cells;
  for (int a = 0; a < 3; ++a) {
    center[a] = static_cast<float>(center[a]);
    if (!(center[a] >= box_.lo[a] && center[a] <= box_.hi[a])) return {};
    cells.lo[a] = static_cast<int>(std::max(std::floor(center[a] - radius_), 1.0 * box_.lo[a]));
    cells.hi[a] = static_cast<int>(std::min(std::ceil(center[a] + radius_), 1.0 * box_.hi[a]));
  }
  return cells;
}

Vec3f ParticleSpheres::velocity(std::ptrdiff_t row) const {
  if (!velocity_[0]) return {};
  return {velocity_[0][row], velocity_[1][row], velocity_[2][row]};
}

float ParticleSpheres::strength(std::ptrdiff_t row) const {
  if (by_speed_) return parameters_.particle_curve.evaluate(length(velocity(row)));
  return mapped_ ? parameters_.particle_curve.evaluate(mapped_[row]) : 1.0f;
}

std::size_t ParticleSpheres::block_bound() const {
  std::size_t sum = 0;
  IntBox all;
  for (std::ptrdiff_t row = 0; row < rows_; ++row) {
    Vec3d center;
    IntBox box = cells(row, center);
    if (box.empty()) continue;
    box.hi += Vec3i(1, 1, 1);
    all = box_union(all, box);
    sum += blocks(box);
  }
  return all.empty() ? 0 : std::min(sum, blocks(all));
}

}  // namespace nbx
