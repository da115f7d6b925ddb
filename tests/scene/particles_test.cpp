// Particles as sources: spheres of weights, and the curve of their strength.

#include "scene/cell_center_voxelizer.h"
#include "scene/particle_voxelizer.h"
#include "support/support.h"

namespace nbx {
namespace {

using Sparse = SparseField<float, 3>;
const IntBox kBox{{0, 0, 0}, {31, 31, 31}};

/// A row of numbers per particle: active, position, velocity, age.
ParticleTable table(const std::vector<std::array<float, 8>>& rows, bool whole = true) {
  const char* const names[] = {"active",     "position.x", "position.y", "position.z",
                               "velocity.x", "velocity.y", "velocity.z", "age"};
  ParticleTable result;
  for (std::size_t i = 0; i < (whole ? 8u : 4u); ++i) {
    ParticleTable::Column column;
    for (const auto& row : rows) column.push_back(row[i]);
    EXPECT_TRUE(result.add(names[i], column));
  }
  return result;
}

SimulationObjectParameters spheres_of(double thickness) {
  SimulationObjectParameters parameters;
  parameters.thickness = thickness;
  parameters.world_to_grid.translation = {8, 8, 8};
  parameters.particle_curve.addPoint(0, 0, kLinearTangent, kLinearTangent);
  parameters.particle_curve.addPoint(2, 1, kLinearTangent, kLinearTangent);
  parameters.particle_curve.rebuild();
  return parameters;
}

void emit(Sparse& weights, const ParticleTable& particles,
          const SimulationObjectParameters& parameters) {
  const ParticleSpheres spheres(particles, parameters, kBox);
  weights.hash_resize(spheres.block_bound());
  voxelize_particles(CellCenterVoxelizer(weights, kBox, {parameters.thickness}), spheres);
}

TEST(Particles, EmitSpheresOfWhichTheStrongestCounts) {
  std::vector<std::array<float, 8>> rows{{0, 2, 2, 2}, {1, -8.5f, 0, 0}, {1, -8, 23, 23}};
  std::mt19937 engine(5);
  std::uniform_real_distribution<float> place(-4, 14);
  for (int i = 0; i < 60; ++i) rows.push_back({1, place(engine), place(engine), place(engine)});
  const SimulationObjectParameters parameters = spheres_of(2.5);
  for (const int threads : {1, 3}) {
    const test::ThreadCount count(threads);
    Sparse weights;
    emit(weights, table(rows, false), parameters);
    int covered = 0;
    test::each_cell({32, 32, 32}, 0, [&](int x, int y, int z) {
      float expected = 0;
      for (std::size_t i = 2; i < rows.size(); ++i) {
        const Vec3d r = Vec3d(x, y, z) - Vec3d(rows[i][1], rows[i][2], rows[i][3]) - Vec3d(8, 8, 8);
        expected = std::max(expected, static_cast<float>(1 - length(r) / 2.5));
      }
      ASSERT_NEAR(weights.value(x, y, z), expected, 1e-6f) << x << " " << y << " " << z;
      covered += expected > 0;
    });
    EXPECT_GT(covered, 1000);
  }
}

TEST(Particles, StrengthFollowsTheMap) {
  const ParticleTable one = table({{1, 0, 0, 0, 0, 1, 0, 0.5f}});
  for (const auto& [map, strength] : {std::pair{ParticleMap::kNone, 1.0f},
                                      {ParticleMap::kAge, 0.25f},
                                      {ParticleMap::kSpeed, 0.5f},
                                      {ParticleMap::kMass, 1.0f},
                                      {ParticleMap::kSize, 1.0f}}) {
    SimulationObjectParameters parameters = spheres_of(2);
    parameters.particle_map = map;
    Sparse weights;
    emit(weights, one, parameters);
    EXPECT_FLOAT_EQ(weights.value(8, 8, 8), strength) << static_cast<int>(map);
  }
  Sparse none;
  emit(none, ParticleTable(), spheres_of(2));
  emit(none, table({}), spheres_of(2));
  EXPECT_TRUE(none.empty());
}

}  // namespace
}  // namespace nbx
