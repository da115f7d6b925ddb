// Particles as sources: each is a small sphere whose strength falls from its center to its surface.
#pragma once

#include <exception>

#include "math/int_box.h"
#include "scene/particle_table.h"
#include "scene/voxelization_triangle.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

/// The particles of a table as spheres in a box of cells. The table and the parameters must outlive
/// it.
class ParticleSpheres {
 public:
  /// Without the columns "active" and "position" there are none.
  ParticleSpheres(const ParticleTable& table, const SimulationObjectParameters& parameters,
                  const IntBox& box);

  std::ptrdiff_t rows() const { return rows_; }
  double radius() const { return radius_; }

  /// The cells of one sphere, and its center in cells. Empty for a particle that isn't active or
  /// whose center lies outside of the box.
  IntBox cells(std::ptrdiff_t row, Vec3d& center) const;
  Vec3f velocity(std::ptrdiff_t row) const;  // 0 without the columns
  /// 1, or the mapped column through the curve.
  float strength(std::ptrdiff_t row) const;

  /// An upper bound for the blocks of a sparse field that the spheres and their upper faces touch.
  std::size_t block_bound() const;

 private:
  const SimulationObjectParameters& parameters_;
  const IntBox box_;
  const double radius_;
  std::ptrdiff_t rows_ = 0;
  const float* active_ = nullptr;
  std::array<const float*, 3> position_{}, velocity_{};
  const float* mapped_ = nullptr;  // null: every particle has strength 1
  bool by_speed_ = false;
};

/// Merges all spheres into the fields of the voxelizer, in parallel; their maps must have room
/// (ParticleSpheres::block_bound). Both must have the same box. Where spheres overlap, the
/// strongest counts, so the values are the same bits for any number of threads. A velocity
/// voxelizer gets the velocity of a particle as the normal.
template <class Voxelizer>
void voxelize_particles(const Voxelizer& voxelizer, const ParticleSpheres& spheres) {
  const double square_radius = spheres.radius() * spheres.radius();
  std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t row = 0; row < spheres.rows(); ++row) {
    try {
      Vec3d center;
      const IntBox box = spheres.cells(row, center);
      if (box.empty()) continue;
      VoxelizationTriangle particle;
      particle.p0 = particle.p1 = particle.p2 = vector_cast<float>(center);
      particle.normal = spheres.velocity(row);
      const float strength = spheres.strength(row);
      auto cursor = voxelizer.cursor();
      for (int z = box.lo[2]; z <= box.hi[2]; ++z)
        for (int y = box.lo[1]; y <= box.hi[1]; ++y)
          for (int x = box.lo[0]; x <= box.hi[0]; ++x) {
            const Vec3d r = Vec3d(x, y, z) - center;
            if (const double q = dot(r, r); q < square_radius)
              voxelizer.hit(cursor, {x, y, z}, q, particle, strength);
          }
    } catch (...) {
#pragma omp critical(voxelize_particles_failure)
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace nbx
