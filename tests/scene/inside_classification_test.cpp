#include "scene/inside_classification.h"

#include <numeric>

#include "scene/meshes.h"
#include "support/support.h"

namespace nbx {
namespace {

using test::Mesh;
using Sparse = SparseField<float, 3>;

void fill(Sparse& field, const std::vector<Mesh>& meshes, const IntBox& box) {
  classify_inside(field, PolygonObjectContainer(test::walk(meshes), box));
}

double sum(const Sparse& field) {
  double s = 0;
  for (const SparseBlockEntry& b : field.blocks())
    s = std::accumulate(b.data, b.data + Sparse::kBlockSize, s);
  return s;
}

const IntBox kBox{{0, 0, 0}, {63, 60, 47}};

TEST(InsideClassification, AgreesWithTheWindingNumber) {
  const std::vector<Mesh> meshes{test::bent_torus({31.3, 29.6, 23.1}, 18, 7, 60, 30)};
  const PolygonWalk walk = test::walk(meshes);
  Sparse field;
  VCVDT<float> grid;
  grid.reset(kBox.size());
  const PolygonObjectContainer triangles(walk, kBox);
  classify_inside(field, triangles);
  classify_inside(grid, triangles);
  std::mt19937 engine(5);
  int in = 0;
  for (int i = 0; i < 3000; ++i) {
    const auto pick = [&](int a) { return static_cast<int>(engine() % kBox.size()[a]); };
    const Vec3i c(pick(0), pick(1), pick(2));
    const bool expected = std::abs(test::winding(walk, vector_cast<double>(c))) > 0.5;
    EXPECT_EQ(field.value(c[0], c[1], c[2]), expected) << c[0] << " " << c[1] << " " << c[2];
    EXPECT_EQ(grid.inside_votes(grid.index(c[0], c[1], c[2])), expected ? 3 : 0);
    in += expected;
  }
  EXPECT_GT(in, 200);
}

TEST(InsideClassification, BoxesHaveTheirVolume) {
  // On the grid, half way between cells, and anywhere; also cut by the grid's border.
  for (const auto& [lo, hi] : {std::pair{Vec3d(4, 5, 6), Vec3d(20, 17, 30)},
                               {Vec3d(4.5, 5.5, 6.5), Vec3d(20.5, 17.5, 30.5)},
                               {Vec3d(3.3, 7.9, 2.1), Vec3d(40.2, 33.7, 41.6)},
                               {Vec3d(9, 9.25, 9), Vec3d(10, 10.25, 10)}}) {
    Sparse field;
    fill(field, {test::box(lo, hi)}, kBox);
    const Vec3d d = hi - lo;
    const double half_layer = d[0] * d[1] + d[1] * d[2] + d[2] * d[0];  // surface / 2
    EXPECT_NEAR(sum(field), d[0] * d[1] * d[2], half_layer);
    if (lo == vector_cast<double>(vector_cast<int>(lo))) {
      EXPECT_EQ(sum(field), d[0] * d[1] * d[2]) << "of two opposite faces one counts";
    }
  }
  Sparse cut;
  fill(cut, {test::box({-30.5, -30.5, -30.5}, {9.5, 9.5, 9.5})}, kBox);
  EXPECT_EQ(sum(cut), 1000);
}

TEST(InsideClassification, HolesAreOutvoted) {
  Mesh open = test::box({10.2, 10.2, 10.2}, {30.4, 30.4, 30.4});
  Sparse closed_field, open_field, sheet;
  fill(closed_field, {open}, kBox);
  open.polygons.pop_back();  // the x lines meet one side only
  fill(open_field, {open}, kBox);
  EXPECT_EQ(sum(closed_field), 8000);
  EXPECT_EQ(sum(open_field), 8000);
  open.polygons.resize(1);
  fill(sheet, {open}, kBox);
  EXPECT_TRUE(sheet.empty());
}

TEST(InsideClassification, BadMeshesFillWhatTheyCan) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Mesh bad = test::box({10.2, 10.2, 10.2}, {30.4, 30.4, 30.4});
  bad.points.insert(bad.points.end(), {{nan, 1, 1}, {1e30, 1e38, -1e38}, {1e300, 0, 0}});
  for (const Mesh::Polygon& p :
       {Mesh::Polygon{0, 8, 1, 1}, {0, 9, 10, 10}, {3, 3, 3, 3}, {0, 1, 0, 1}, {0, 1, 2000, -7}})
    bad.polygons.push_back(p);
  // A second skin, exactly on the first, twice: an odd number of skins is one.
  for (int i = 0; i < 12; ++i)
    bad.polygons.push_back(bad.polygons[static_cast<std::size_t>(i % 6)]);
  Sparse field;
  fill(field, {bad}, kBox);
  EXPECT_EQ(sum(field), 8000);

  // Intersecting boxes: what lies in both is outside.
  Sparse two;
  fill(two,
       {test::box({3.5, 3.5, 3.5}, {13.5, 13.5, 13.5}),
        test::box({8.5, 8.5, 8.5}, {18.5, 18.5, 18.5})},
       kBox);
  EXPECT_EQ(sum(two), 2000 - 2 * 125);

  Sparse none;
  fill(none, {test::bent_torus({1e4, 31, 29}, 18, 7, 40, 20)}, kBox);
  fill(none, {}, kBox);
  fill(none, {Mesh()}, kBox);
  fill(none, {test::box({3, 3, 3}, {9, 9, 9})}, IntBox());
  EXPECT_TRUE(none.empty());
}

// Lines that meet many triangles, which lie aslant in many leaves of the tree.
TEST(InsideClassification, FortyShellsInOneAnother) {
  const auto radius = [](int k) { return 3.25 + 0.5 * k; };
  std::vector<Mesh> shells;
  for (int k = 0; k < 40; ++k) {
    Mesh octahedron;
    for (int point = 0; point < 6; ++point) {
      octahedron.points.emplace_back(24, 24, 24);
      octahedron.points.back()[point / 2] += point % 2 == 0 ? radius(k) : -radius(k);
    }
    for (int x : {0, 1})
      for (int y : {2, 3})
        for (int z : {4, 5}) octahedron.polygons.push_back({x, y, z, z});
    shells.push_back(test::in_cells(octahedron));
  }
  Sparse field;
  fill(field, shells, {{0, 0, 0}, {48, 48, 48}});
  test::each_cell({49, 49, 49}, 0, [&](int x, int y, int z) {
    const int d = std::abs(x - 24) + std::abs(y - 24) + std::abs(z - 24);
    int round = 0;
    for (int k = 0; k < 40; ++k) round += radius(k) > d;
    ASSERT_EQ(field.value(x, y, z), round % 2) << x << " " << y << " " << z;
  });
}

}  // namespace
}  // namespace nbx
