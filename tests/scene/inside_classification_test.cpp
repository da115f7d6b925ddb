#include "scene/inside_classification.h"

#include <numeric>

#include "scene/meshes.h"

namespace nbx {
namespace {

using test::Mesh;
using Sparse = SparseField<float, 3>;

/// How many cells of the box lie inside.
double inside(const std::vector<Mesh>& meshes, const IntBox& box) {
  Sparse field;
  classify_inside(field, PolygonObjectContainer(test::walk(meshes), box));
  double s = 0;
  for (const SparseBlockEntry& b : field.blocks())
    s = std::accumulate(b.data, b.data + Sparse::kBlockSize, s);
  return field.empty() ? -1 : s;
}

const IntBox kBox{{0, 0, 0}, {63, 60, 47}};

// Nested shells, so that a line meets many triangles in many leaves of the tree. A cell is inside
// if an odd number of shells surrounds it.
TEST(InsideClassification, AgreesWithTheWindingNumber) {
  std::vector<Mesh> meshes{test::bent_torus({31.3, 29.6, 23.1}, 18, 7, 60, 30)};
  for (double tube = 6.7; tube > 0.4; tube -= 0.27)
    meshes.push_back(test::bent_torus({31.3, 29.6, 23.1}, 18, tube, 24, 12));
  const PolygonWalk walk = test::walk(meshes);
  Sparse field;
  VCVDT<float> grid;
  grid.reset(kBox.size());
  const PolygonObjectContainer triangles(walk, kBox);
  classify_inside(field, triangles);
  classify_inside(grid, triangles);
  std::mt19937 engine(5);
  int in = 0;
  for (int i = 0; i < 1500; ++i) {
    const auto pick = [&](int a) { return static_cast<int>(engine() % kBox.size()[a]); };
    const Vec3i c(pick(0), pick(1), pick(2));
    const bool expected = std::lround(test::winding(walk, vector_cast<double>(c))) % 2 != 0;
    EXPECT_EQ(field.value(c[0], c[1], c[2]), expected) << c[0] << " " << c[1] << " " << c[2];
    EXPECT_EQ(grid.inside_votes(grid.index(c[0], c[1], c[2])), expected ? 3 : 0);
    in += expected;
  }
  EXPECT_GT(in, 40);
}

TEST(InsideClassification, BoxesHaveTheirVolume) {
  // On the grid, half way between cells, and anywhere; also cut by the grid's border.
  for (const auto& [lo, hi] : {std::pair{Vec3d(4, 5, 6), Vec3d(20, 17, 30)},
                               {Vec3d(4.5, 5.5, 6.5), Vec3d(20.5, 17.5, 30.5)},
                               {Vec3d(3.3, 7.9, 2.1), Vec3d(40.2, 33.7, 41.6)},
                               {Vec3d(9, 9.25, 9), Vec3d(10, 10.25, 10)}}) {
    const Vec3d d = hi - lo;
    const double half_layer = d[0] * d[1] + d[1] * d[2] + d[2] * d[0];  // surface / 2
    const bool on_grid = lo == vector_cast<double>(vector_cast<int>(lo));
    EXPECT_NEAR(inside({test::box(lo, hi)}, kBox), d[0] * d[1] * d[2], on_grid ? 0 : half_layer)
        << "one of two opposite faces counts";
  }
  EXPECT_EQ(inside({test::box({-30.5, -30.5, -30.5}, {9.5, 9.5, 9.5})}, kBox), 1000);
}

TEST(InsideClassification, BadMeshesFillWhatTheyCan) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Mesh whole = test::box({10.2, 10.2, 10.2}, {30.4, 30.4, 30.4});
  Mesh open = whole, bad = whole;
  open.polygons.pop_back();  // the x lines meet one side only
  EXPECT_EQ(inside({open}, kBox), 8000) << "holes are outvoted";
  open.polygons.resize(1);
  bad.points.insert(bad.points.end(), {{nan, 1, 1}, {1e30, 1e38, -1e38}, {1e300, 0, 0}});
  for (const Mesh::Polygon& p :
       {Mesh::Polygon{0, 8, 1, 1}, {0, 9, 10, 10}, {3, 3, 3, 3}, {0, 1, 0, 1}, {0, 1, 2000, -7}})
    bad.polygons.push_back(p);
  // Two more surfaces exactly on the first: an odd number counts as one.
  for (int i = 0; i < 12; ++i) bad.polygons.push_back(bad.polygons[i % 6]);
  EXPECT_EQ(inside({bad}, kBox), 8000);
  // The intersection of two boxes is outside.
  EXPECT_EQ(inside({test::box({3.5, 3.5, 3.5}, {13.5, 13.5, 13.5}),
                    test::box({8.5, 8.5, 8.5}, {18.5, 18.5, 18.5})},
                   kBox),
            2000 - 2 * 125);
  for (const Mesh& none : {open, test::bent_torus({1e4, 31, 29}, 18, 7, 40, 20), Mesh()})
    EXPECT_EQ(inside({none}, kBox), -1) << "no block";
  EXPECT_EQ(inside({whole}, IntBox()), -1);
}

}  // namespace
}  // namespace nbx
