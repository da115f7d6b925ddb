#include "scene/walk/triangle_scan.h"

#include <limits>
#include <map>
#include <tuple>

#include "scene/meshes.h"

namespace nbx {
namespace {

struct Hit {
  double q = 0, d = 0;
};
using Hits = std::map<std::tuple<int, int, int>, Hit>;

/// Where the triangle is near, from x = `first` on.
Hits scan(const VoxelizationTriangle& triangle, double reach, const IntBox& box, int first) {
  Hits hits;
  TriangleScan(triangle, reach, box).run([&](int x, int y, int z, double q, double d) {
    const bool added = x < first || hits.emplace(std::tuple(x, y, z), Hit{q, d}).second;
    EXPECT_TRUE(added) << "a cell is visited twice";
  });
  return hits;
}

/// Every cell of `box` from x = `first` on must be hit exactly when it lies within reach, with the
/// right distance. Returns the number of hits.
int compare(const VoxelizationTriangle& triangle, double reach, const IntBox& box, int first = 0,
            double tolerance = 1e-9) {
  Hits hits = scan(triangle, reach, box, first);
  const int found = static_cast<int>(hits.size());
  const Vec3d p0 = vector_cast<double>(triangle.p0);
  const Vec3d normal = cross(vector_cast<double>(triangle.p1) - p0,  //
                             vector_cast<double>(triangle.p2) - p0);
  const Vec3i lo(first, box.lo[1], box.lo[2]);
  test::each_cell(box.hi - lo + Vec3i(1, 1, 1), 0, [&](int i, int j, int k) {
    const Vec3i at = lo + Vec3i(i, j, k);
    const Vec3d c = vector_cast<double>(at);
    const double q = test::square_distance_to_triangle(c, triangle);
    const auto hit = hits.find({at[0], at[1], at[2]});
    if (hit == hits.end()) {
      EXPECT_GT(q, reach * reach - tolerance) << i << " " << j << " " << k << " is missing";
      return;
    }
    EXPECT_NEAR(hit->second.q, q, tolerance) << i << " " << j << " " << k;
    EXPECT_NEAR(hit->second.d, dot(c - p0, normal) / length(normal), tolerance);
    hits.erase(hit);
  });
  EXPECT_TRUE(hits.empty()) << "hits outside of the box";
  return found;
}

TEST(TriangleScan, DistancesOfRandomTriangles) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<float> place(-4, 24), shift(-1.5f, 1.5f), reach(0.5f, 4);
  const IntBox box{{0, 0, 0}, {20, 19, 21}};
  const auto point = [&](auto& d) { return Vec3f(d(engine), d(engine), d(engine)); };
  int hits = 0;
  for (int i = 0; i < 300; ++i) {
    VoxelizationTriangle t{point(place), point(place), point(place)};
    if (i % 3 == 1) t.p1 = t.p0 + point(shift);                          // small edge
    if (i % 3 == 2) t.p2 = (t.p0 + t.p1) * 0.5f + point(shift) * 0.05f;  // sliver, obtuse
    hits += compare(t, reach(engine), box);
  }
  EXPECT_GT(hits, 100000);
}

TEST(TriangleScan, CornersOnCellsAndPlanesAlongTheGrid) {
  const IntBox box{{0, 0, 0}, {12, 12, 12}};
  const VoxelizationTriangle triangles[] = {
      {{2, 2, 5}, {9, 2, 5}, {2, 9, 5}},        // in a z plane
      {{5, 2, 2}, {5, 2, 9}, {5, 9, 2}},        // in an x plane: no clipping along rows
      {{2, 2, 2}, {9, 9, 2}, {2, 2, 9}},        // diagonal
      {{-3, 6, 6}, {6, -30, 6}, {60, 6, 6.5}},  // larger than the box
  };
  for (const auto& t : triangles)
    for (double reach : {1.0, 2.0}) EXPECT_GT(compare(t, reach, box), 50);
  const Hits hits = scan(triangles[0], 2, box, 0);
  EXPECT_EQ(hits.at({3, 3, 7}).q, 4) << "exactly at the reach";
}

TEST(TriangleScan, StepsStayExactInALargeDomain) {
  // A sliver along x: rows from end to end, or cut by a box.
  for (const auto& [n, bound] : {std::pair{1000, 1e-9}, {500000, 1e-3}}) {
    const auto far_end = static_cast<float>(n);
    const VoxelizationTriangle t{{3, 2, 1}, {far_end + 0.5f, 7, 5}, {far_end - 8.25f, 40, 22}};
    EXPECT_GT(compare(t, 1.8, {{0, 0, 0}, {n + 4, 50, 30}}, n - 40, bound), 1000);
    EXPECT_GT(compare(t, 2, {{n - 40, 0, 0}, {n + 4, 50, 30}}, n - 40), 1000);
  }
}

TEST(TriangleScan, BadTrianglesLeaveNoMark) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  const float huge = std::numeric_limits<float>::max();
  const IntBox box{{0, 0, 0}, {20, 20, 20}};
  // A short edge, corners in a line, NaN, outside of the box, huge.
  for (const VoxelizationTriangle& bad :
       {VoxelizationTriangle{{5, 5, 5}, {5.001f, 5, 5}, {9, 9, 9}},
        {{1, 1, 1}, {7, 7, 7}, {19, 19, 19}},
        {{nan, 5, 5}, {9, 5, 5}, {5, 9, 5}},
        {{5, 5, 5}, {9, inf, 5}, {5, 9, 5}},
        {{200, 5, 5}, {209, 5, 5}, {200, 9, 5}},
        {{huge, huge, 5}, {-huge, huge, 5}, {huge, huge, 6}}})
    EXPECT_TRUE(scan(bad, 2, box, 0).empty());
  const Hits hits = scan({{-1e6f, -1e6f, 5}, {3e6f, -1e6f, 5}, {-1e6f, 3e6f, 5}}, 1, box, 0);
  EXPECT_EQ(hits.size(), 21u * 21u * 3u) << "a plane through the box";
}

}  // namespace
}  // namespace nbx
