// From voxelized solids to signed distances and to velocities on the faces.
#include "scene/solid_velocities.h"
#include "scene/vcvdt_post_process.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {
namespace {

constexpr float kFar = VCVDT<float>::kFar;

/// A voxelized ball: distances within sqrt(3) of the surface, three votes inside. The vertex is 1
/// above the plane of the center, 0 below. `with_hole` leaves out the top.
VCVDT<float> ball(int n, const Vec3f& center, float radius, bool with_hole) {
  VCVDT<float> vdt;
  vdt.reset({n, n, n});
  test::each_cell({n, n, n}, 0, [&](int i, int j, int k) {
    const Vec3f r = Vec3f(i, j, k) - center;
    const float d = length(r) - radius;
    const std::size_t c = vdt.index(i, j, k);
    if (d < 0) vdt.label[c] += 3 * VCVDT<float>::kVote;
    if (d * d > 3 || (with_hole && r[2] > 0.8f * radius)) return;
    const Vec3f way = normalized(r) * (d > 0 ? -1.0f : 1.0f);
    vdt.dx[c] = way[0], vdt.dy[c] = way[1], vdt.dz[c] = way[2];
    vdt.dist2[c] = d * d;
    vdt.label[c] = (vdt.label[c] & VCVDT<float>::kVotesMask) | (r[2] > 0 ? 1u : 0u);
  });
  return vdt;
}

TEST(PostProcess, GivesSignedDistancesAndTheNearestVertex) {
  const Vec3f center(10.2f, 9.8f, 10.4f);
  constexpr float radius = 7.3f;
  VCVDT<float> vdt = ball(21, center, radius, false);
  Field<float> phi;
  std::vector<std::int32_t> ids;
  post_process_voxelized(phi, ids, vdt);
  int deep = 0, surface = 0, far = 0;
  test::each_cell(phi.dims(), 0, [&](int i, int j, int k) {
    const Vec3f r = Vec3f(i, j, k) - center;
    const float d = length(r) - radius, value = phi(i, j, k);
    ASSERT_EQ(value < 0, d < 0);
    if (std::abs(value) == kFar) {
      ASSERT_GT(d, 0.4f) << "all inside cells are reached";
      ++far;
    } else if (std::abs(d) < 0.4f) {  // it has a neighbor on the other side
      ASSERT_FLOAT_EQ(std::abs(value), d * d);
      ++surface;
    }
    if (d > 0 || d < -radius + 3) return;
    // Offsets from cells at the surface count as 1 long, which is wrong by less than 1.
    ASSERT_NEAR(std::sqrt(-value), -d, 1.1f) << i << " " << j << " " << k;
    ASSERT_TRUE(std::abs(r[2]) <= 1 || ids[phi.index(i, j, k)] == (r[2] > 0));
    ++deep;
  });
  EXPECT_GT(deep, 800);
  EXPECT_GT(surface, 300);
  EXPECT_GT(far, 4000);

  // In a hole of the surface, inside cells count as lying on it, without a vertex.
  vdt = ball(21, center, radius, true);
  post_process_voxelized(phi, ids, vdt);
  EXPECT_EQ(phi(10, 10, 17), 0);
  EXPECT_TRUE(std::signbit(phi(10, 10, 17)));
  EXPECT_EQ(phi(10, 10, 18), kFar);
  EXPECT_EQ(ids[phi.index(10, 10, 17)], -1);
  EXPECT_FLOAT_EQ(phi(10, 10, 16), -1);
}

TEST(SolidVelocities, FacesTakeTheNearestVertex) {
  Field<float> phi(8, 6, 6), u(9, 6, 6), v(8, 7, 6), w(8, 6, 7);
  std::vector<std::int32_t> ids(phi.count());
  const float distances[] = {-4, -1, 0.5f, kFar, -2, kFar, -1, kFar};
  const std::int32_t vertices[] = {2, 0, 1, -1, -1, -1, 7, -1};  // there is no vertex 7
  test::each_cell(phi.dims(), 0, [&](int x, int y, int z) {
    phi(x, y, z) = distances[x];
    ids[phi.index(x, y, z)] = vertices[x];
  });
  const std::vector<Vec3f> velocities{{3, -1, 2}, {5, 4, -6}, {7, 7, 7}};
  std::fill_n(u.data(), u.count(), 99.0f);
  set_solid_velocities(u, v, w, phi, ids, velocities);
  // Between 0 and 1 the latter is nearer; between 1 and 2 the latter again.
  const float expected[] = {0, 3, 5, 0, 0, 0, 0, 0, 0};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(u(i, 3, 2), expected[i]) << i;
  EXPECT_EQ(v(1, 3, 2), -1);
  EXPECT_EQ(v(1, 0, 2), -1) << "out of the grid";
  EXPECT_EQ(v(1, 6, 2), 0) << "into the grid";
  EXPECT_EQ(w(1, 3, 0), 0);
  EXPECT_EQ(w(1, 3, 6), 2);
  EXPECT_EQ(v(2, 3, 3), 0) << "fluid on both sides";
  EXPECT_EQ(u(1, 0, 3), 0);
  EXPECT_THROW(set_solid_velocities(v, u, w, phi, ids, velocities),
               FieldDimensionMismatchException);
}

}  // namespace
}  // namespace nbx
