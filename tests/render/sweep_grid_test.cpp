#include "render/light/sweep_grid.h"

#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

namespace nbx {
namespace {

SweepMedium uniform(const Vec3i& dims, float extinction, float albedo) {
  SweepMedium medium;
  medium.dims = dims;
  const float s = extinction * albedo;
  medium.cells.assign(Field3(dims, 0).count(), {extinction, {s, s, s}});
  return medium;
}

bool go_on(int, int) { return true; }

double sum(const Field3& f) { return std::accumulate(f.data.begin(), f.data.end(), 0.0); }

// One ray at a time, from a cell of the face in a straight line through the grid, from wall to
// wall, until it leaves. A ray that leaves sideways re-enters on the other side of the grid as a
// new ray, without light.
Field3 plain_sweep(const Field3& source, const SweepMedium& medium, int d, double h) {
  const Vec3i dims = source.dims;
  Field3 gathered(dims, 0);
  for (int face = 0; face < 6; ++face) {
    const int axis = face % 3, l1 = axis == 0 ? 1 : 0, l2 = axis == 2 ? 1 : 2;
    for (int n = 0; n < d * d; ++n) {
      const double alpha = ((n / d + 0.5) * 2 / d - 1) * std::numbers::pi / 4;
      const double beta = ((n % d + 0.5) * 2 / d - 1) * std::numbers::pi / 4;
      Vec3d v{std::sin(beta) * std::cos(alpha), std::sin(alpha) * std::cos(beta), 0};
      v[2] = std::sqrt(1 - v[0] * v[0] - v[1] * v[1]) * (face < 3 ? 1 : -1);
      std::swap(v[2], v[axis]);
      for (int start = 0; start < dims[l1] * dims[l2]; ++start) {
        Vec3i at{0, 0, 0};
        at[l1] = start % dims[l1];
        at[l2] = start / dims[l1];
        at[axis] = face < 3 ? 0 : dims[axis] - 1;
        Vec3d to_wall{1e300, 1e300, 1e300};  // along the ray
        for (int a = 0; a < 3; ++a)
          if (v[a] != 0) to_wall[a] = (a == axis ? 1 : 0.5) / std::abs(v[a]);
        std::array<double, 3> light{0, 0, 0};
        while (at[axis] >= 0 && at[axis] < dims[axis]) {
          const int through = to_wall[l1] < to_wall[l2] ? (to_wall[l1] < to_wall[axis] ? l1 : axis)
                                                        : (to_wall[l2] < to_wall[axis] ? l2 : axis);
          const double length = to_wall[through];
          const auto cell = source.index(at[0], at[1], at[2]);
          const auto& m = medium.cells[cell];
          for (std::size_t c = 0; c < 3; ++c) {
            gathered.cell(cell)[c] +=
                static_cast<float>(light[c] * (1 - std::exp(-m.scattering[c] * length * h)));
            const double kept = std::exp(-m.extinction * length * h);
            if (m.extinction > 0)
              light[c] = light[c] * kept + source.cell(cell)[c] / m.extinction * (1 - kept);
          }
          to_wall -= Vec3d(length, length, length);
          to_wall[through] = 1 / std::abs(v[through]);
          at[through] += v[through] > 0 ? 1 : -1;
          if (through == axis || (at[through] >= 0 && at[through] < dims[through])) continue;
          at[through] += at[through] < 0 ? dims[through] : -dims[through];
          light = {0, 0, 0};
        }
      }
    }
  }
  return gathered;
}

TEST(SweepGrid, AgreesWithStraightRaysOneByOne) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<float> value(0, 2);
  for (const auto& [dims, d, threads] : {std::tuple{Vec3i{5, 20, 7}, 3, 2},
                                         {{18, 3, 4}, 2, 1},
                                         {{1, 1, 1}, 1, 2},
                                         {{2, 9, 33}, 4, 2}}) {
    Field3 source(dims, 0);
    SweepMedium medium = uniform(dims, 0, 0);
    for (float& s : source.data) s = value(engine);
    for (auto& cell : medium.cells)
      if (value(engine) > 0.5f) cell = {value(engine), {value(engine), value(engine), 0}};
    Field3 gathered(dims, 0);
    ASSERT_TRUE(SweepGrid(dims, d, 0.7).sweep(gathered, source, medium, threads, go_on));
    const Field3 expected = plain_sweep(source, medium, d, 0.7);
    for (std::size_t i = 0; i < gathered.data.size(); ++i)
      ASSERT_NEAR(gathered.data[i], expected.data[i], 2e-5 * (1 + expected.data[i])) << i;
    Field3 again(dims, 0);
    ASSERT_TRUE(SweepGrid(dims, d, 0.7).sweep(again, source, medium, 3 - threads, go_on));
    EXPECT_EQ(again.data, gathered.data) << "another number of threads";
  }
}

// The path of a ray in a slab is 1 / cos times as long as the slab is thick, and all D^2 directions
// have the same weight. So a cell sends out too much, at most by the mean of 1 / cos, which is 1.19
// for D = 3. In a thick white medium this is the factor per sweep, less what leaves the grid. With
// an albedo below 1 / 1.19 light fades from sweep to sweep, however thick the medium is.
TEST(SweepGrid, WhiteMediumKeepsItsLight) {
  constexpr int d = 3;
  const double c1 = std::cos(std::numbers::pi / 6), s = std::sin(std::numbers::pi / 6) * c1;
  const double excess = (1 + 4 / c1 + 4 / std::sqrt(1 - 2 * s * s)) / 9;
  const Vec3i dims{24, 24, 24};
  for (const float extinction : {0.02f, 1.0f, 20.0f})
    for (const float albedo : {1.0f, 0.84f}) {
      const SweepMedium medium = uniform(dims, extinction, albedo);
      SweepGrid grid(dims, d, 0.25);
      Field3 source(dims, 1.0f);
      for (int sweep = 0; sweep < 4; ++sweep) {
        Field3 gathered(dims, 0);
        ASSERT_TRUE(grid.sweep(gathered, source, medium, 2, go_on));
        for (float& g : gathered.data) g *= static_cast<float>(grid.gather_factor());
        EXPECT_GT(sum(gathered), 0);
        EXPECT_LE(sum(gathered), sum(source) * (albedo < 1 ? 1.0 : excess));
        // In the middle of a thick cloud, cells of five mean free paths absorb some of their own
        // light, and as much of the rest comes back as goes out.
        const auto middle = source.index(12, 12, 12);
        const double back = *gathered.cell(middle) / *source.cell(middle);
        EXPECT_TRUE(extinction < 20 || (back >= albedo * 0.2 && back <= albedo * excess)) << back;
        source = gathered;
      }
    }
  int calls = 0;
  Field3 gathered(dims, 0);
  const auto stop = [&](int, int) { return ++calls < 7; };
  EXPECT_FALSE(
      SweepGrid(dims, 1, 1).sweep(gathered, Field3(dims, 1), uniform(dims, 1, 1), 2, stop));
  EXPECT_EQ(calls, 7);
}

}  // namespace
}  // namespace nbx
