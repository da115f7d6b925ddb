#include "scene/cell_center_voxelizer.h"

#include "scene/brute_force_distance.h"
#include "support/support.h"

namespace nbx {
namespace {

using Sparse = SparseField<float, 3>;

std::vector<VoxelizationTriangle> random_triangles(int count, unsigned seed, float size) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> place(-5, 60), shift(-size, size);
  std::vector<VoxelizationTriangle> triangles;
  for (int i = 0; i < count; ++i) {
    const Vec3f p(place(engine), place(engine), place(engine));
    const auto corner = [&] { return p + Vec3f(shift(engine), shift(engine), shift(engine)); };
    triangles.push_back({p, corner(), corner()});
  }
  return triangles;
}

TEST(CellCenterVoxelizer, WeightsAreTheLargestOfAllTriangles) {
  const auto triangles = random_triangles(40, 3, 8);
  const IntBox box{{0, 0, 0}, {55, 50, 53}};
  const double thickness = 2.5;
  Sparse field;
  voxelize(field, triangles, box, {thickness});
  int marked = 0;
  test::each_cell(box.hi + Vec3i(1, 1, 1), 0, [&](int x, int y, int z) {
    double w = 0;
    for (const auto& t : triangles)
      w = std::max(w,
                   1 - std::sqrt(test::square_distance_to_triangle(Vec3d(x, y, z), t)) / thickness);
    ASSERT_NEAR(field.value(x, y, z), w, 1e-6) << x << " " << y << " " << z;
    marked += w > 0;
  });
  EXPECT_GT(marked, 10000);
}

TEST(CellCenterVoxelizer, EdgesOfTheReach) {
  const VoxelizationTriangle flat{{8, 8, 15}, {14, 8, 15}, {8, 14, 15}};
  Sparse field, cut;
  voxelize(field, std::vector{flat, flat}, {{0, 0, 0}, {30, 30, 30}}, {1});
  EXPECT_EQ(field.blocks().size(), 1u) << "cells at the reach need no blocks of their own";
  // What lies outside of the box isn't written.
  voxelize(cut, std::vector{flat}, {{10, 0, 0}, {30, 30, 15}}, {2});
  EXPECT_EQ(cut.value(9, 9, 15) + cut.value(10, 9, 16), 0);
  float cell = 0.5f;
  merge_largest(cell, -0.75f);
  merge_largest(cell, 0.6f);
  EXPECT_EQ(cell, -0.75f) << "the larger magnitude stays";
}

}  // namespace
}  // namespace nbx
