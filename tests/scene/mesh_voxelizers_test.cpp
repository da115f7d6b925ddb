// Meshes as sources and solids: weights, push on faces, distances, textures.

#include "scene/cell_center_voxelizer.h"
#include "scene/inside_classification.h"
#include "scene/meshes.h"
#include "scene/solid_voxelizer.h"
#include "scene/velocity_voxelizer.h"

namespace nbx {
namespace {

using test::Mesh;
using Sparse = SparseField<float, 3>;

const IntBox kBox{{0, 0, 0}, {63, 60, 47}};

TEST(CellCenterVoxelizer, EdgesOfTheReach) {
  const VoxelizationTriangle flat{{8, 8, 15}, {14, 8, 15}, {8, 14, 15}};
  Sparse field, cut;
  voxelize(field, std::vector{flat, flat}, {{0, 0, 0}, {30, 30, 30}}, {1});
  EXPECT_EQ(field.blocks().size(), 1u) << "cells at the reach need no blocks of their own";
  // Nothing outside of the box is written.
  voxelize(cut, std::vector{flat}, {{10, 0, 0}, {30, 30, 15}}, {2});
  EXPECT_EQ(cut.value(9, 9, 15) + cut.value(10, 9, 16), 0);
  float cell = 0.5f;
  merge_largest(cell, -0.75f);
  merge_largest(cell, 0.6f);
  EXPECT_EQ(cell, -0.75f) << "the larger magnitude stays";
}

TEST(VelocityVoxelizer, PushesAlongTheNormalOnBothFaces) {
  Sparse u, v, w;
  const std::vector<Mesh> box{test::box({10, 10, 10}, {30, 30, 30})};
  voxelize_velocity({&u, &v, &w}, test::walk(box), kBox, {2}, 3);
  // The box's polygons look outward, and so do they in cells.
  EXPECT_EQ(u.value(30, 20, 20), 3) << "on the surface";
  EXPECT_EQ(u.value(31, 20, 20), 3) << "the far face of the surface's cells wins";
  EXPECT_EQ(u.value(32, 20, 20), 1.5f);
  EXPECT_EQ(u.value(33, 20, 20), 0);
  EXPECT_EQ(u.value(10, 20, 20), -3);
  EXPECT_EQ(w.value(20, 20, 31), 3);
  EXPECT_EQ(w.value(20, 20, 10), -3);
  EXPECT_EQ(v.value(20, 20, 30), 0) << "faces that the other sides push don't move";
  EXPECT_EQ(u.find(20, 20, 8), nullptr) << "no push along x, no block";
}

TEST(MeshVoxelizers, SameBitsForAnyNumberOfThreads) {
  // Two copies of a torus, so that cells have several nearest triangles.
  std::vector<Mesh> meshes(2, test::bent_torus({31.3, 29.6, 23.1}, 18, 7, 90, 45));
  meshes.push_back(test::bent_torus({26.8, 31.1, 20.4}, 16, 6, 80, 50));
  meshes[0].first_id = 7000;  // its twin has none: ties between all and nothing
  meshes[2].first_id = 0;
  const std::vector<Mesh> fine{test::bent_torus({31.3, 29.6, 23.1}, 18, 7, 300, 150)};
  std::vector<float> cells[2];
  VCVDT<float> grids[2];
  for (int run = 0; run < 2; ++run) {
    const test::ThreadCount threads(run == 0 ? 1 : 4);
    std::array<Sparse, 4> fields;  // the push, and the inside of a torus of many triangles
    voxelize_velocity({&fields[0], &fields[1], &fields[2]}, test::walk(meshes), kBox, {2.5}, 3);
    classify_inside(fields[3], PolygonObjectContainer(test::walk(fine), kBox));
    for (const Sparse& axis : fields)
      test::each_cell(kBox.size(), 0,
                      [&](int x, int y, int z) { cells[run].push_back(axis.value(x, y, z)); });
    grids[run].reset(kBox.size());
    voxelize(grids[run], test::walk(meshes));
  }
  EXPECT_EQ(cells[0], cells[1]);
  EXPECT_GT(std::count_if(cells[0].begin(), cells[0].end(), [](float v) { return v < 0; }), 5000);
  EXPECT_GT(std::count(cells[0].end() - 64 * 61 * 48, cells[0].end(), 1.0f), 10000);
  EXPECT_EQ(grids[0].label, grids[1].label);
  for (const auto field : {&VCVDT<float>::dist2, &VCVDT<float>::dx, &VCVDT<float>::dz})
    EXPECT_TRUE(test::same_bits(grids[0].*field, grids[1].*field));
}

// The weights of sources and the distances of solids, compared with a loop over all triangles.
TEST(MeshVoxelizers, FindTheNearestTriangle) {
  std::vector<Mesh> meshes{test::bent_torus({31.3, 29.6, 23.1}, 18, 7, 40, 20)};
  meshes[0].first_id = 100;
  const PolygonWalk walk = test::walk(meshes);
  std::vector<VoxelizationTriangle> triangles;
  const test::ThreadCount one(1);
  walk.run([&](const VoxelizationTriangle& t) { triangles.push_back(t); });
  ASSERT_EQ(triangles.size(), 1600u);
  VCVDT<float> grid;
  grid.reset(kBox.size());
  voxelize(grid, walk);
  Sparse weights;
  voxelize(weights, walk, kBox, {2.5});
  int near = 0;
  for (int i = 0; i < 4000; ++i) {
    const Vec3i c(7 + i % 41, 8 + i * 7 % 43, 5 + i * 13 % 37);
    double nearest = 1e300;
    for (const auto& t : triangles)
      nearest = std::min(nearest, test::square_distance_to_triangle(vector_cast<double>(c), t));
    ASSERT_NEAR(weights.value(c[0], c[1], c[2]), std::max(0.0, 1 - std::sqrt(nearest) / 2.5), 1e-6);
    const std::size_t cell = grid.index(c[0], c[1], c[2]);
    if (nearest > 3) {
      EXPECT_EQ(grid.dist2[cell], VCVDT<float>::kFar);
      EXPECT_EQ(grid.label[cell], VCVDT<float>::kNoId);
      continue;
    }
    ++near;
    EXPECT_NEAR(grid.dist2[cell], nearest, 1e-5);
    const Vec3d offset(grid.dx[cell], grid.dy[cell], grid.dz[cell]);
    EXPECT_NEAR(length(offset), 1, 1e-6);
    // Edges are up to 3.2 cells long: no nearer corner may lie far from the one that was chosen.
    const auto id = static_cast<std::size_t>(grid.label[cell]) - 100;
    ASSERT_LT(id, meshes[0].points.size());
    EXPECT_LT(length(meshes[0].points[id] - vector_cast<double>(c)), std::sqrt(nearest) + 3.2);
  }
  EXPECT_GT(near, 300);
}

/// u itself.
class Ramp final : public SurfaceTexture {
  float value(const Vec3f& uvw) const override { return uvw[0]; }
};

/// A sheet of quads at z = 20 that covers [10, 30] x [15, 20]. Its weights, and its coordinate u,
/// are 0 left of x = 20 and 1 from there on.
Mesh stepped_sheet(double edge) {
  Mesh mesh;
  const int n = static_cast<int>(20 / edge + 0.5), row = n + 1, rows = n / 4;
  for (int j = 0; j <= rows; ++j)
    for (int i = 0; i < row; ++i) {
      mesh.points.emplace_back(10 + i * edge, 15 + j * edge, 20);
      mesh.corner_weights.push_back(2 * i < n ? 0.0f : 1.0f);
    }
  for (int j = 0; j < rows; ++j)
    for (int i = 0; i < n; ++i) {
      const int a = j * row + i;
      mesh.polygons.push_back({a, a + 1, a + row + 1, a + row});
      auto& uvw = mesh.uvw.emplace_back();
      for (std::size_t k = 0; k < 4; ++k) uvw[k][0] = mesh.corner_weights[mesh.polygons.back()[k]];
    }
  mesh.texture = std::make_shared<Ramp>();
  return test::in_cells(std::move(mesh));
}

// Most cells in reach of a triangle smaller than a cell lie outside of its edges.
TEST(ThicknessProfile, WeightsAndTexturesStayWithinTheirTriangle) {
  ThicknessProfile profiles[2]{{1.8}, {1.8}};
  profiles[0].use_corner_weights = profiles[1].use_surface_texture = true;
  for (const double edge : {5.0, 1.0, 0.25, 0.1})
    for (const ThicknessProfile& profile : profiles) {
      SCOPED_TRACE(edge);
      const std::vector<Mesh> sheet{stepped_sheet(edge)};
      Sparse plain, scaled, u, v, w;
      voxelize(plain, test::walk(sheet), kBox, {1.8});
      voxelize(scaled, test::walk(sheet), kBox, profile);
      voxelize_velocity({&u, &v, &w}, test::walk(sheet), kBox, profile, 1);
      test::each_cell(kBox.size(), 0, [&](int x, int y, int z) {
        const float most = plain.value(x, y, z), is = scaled.value(x, y, z);
        const bool beyond = x >= 20, before = x < 20 - 1.8 - edge;
        ASSERT_GE(is, beyond ? most - 1e-5f : 0) << x << " " << y << " " << z;
        ASSERT_LE(is, before ? 0 : most + 1e-5f) << x << " " << y << " " << z;
        ASSERT_LE(std::abs(w.value(x, y, z)), 1.00001f);
        ASSERT_GE(w.value(x, y, z) * w.value(25, 18, 20), 0) << "no push is reversed";
      });
      EXPECT_EQ(std::abs(w.value(25, 18, 20)), 1);
      // On the way up across a quad that is wide enough to hold cells.
      EXPECT_NEAR(scaled.value(17, 18, 20), edge == 5 ? 0.4f : 0, 1e-5f);
    }
}

}  // namespace
}  // namespace nbx
