#include "math/interpolation.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "support/support.h"

namespace nbx {
namespace {

using Function = std::function<double(double, double, double)>;
using Sampler = float (*)(const Field<float>&, float, float, float);

Field<float> field_of(const Function& f, int nx, int ny, int nz, double h = 1) {
  Field<float> g(nx, ny, nz);
  test::each_cell(g.dims(), 0, [&](int i, int j, int k) {
    g(i, j, k) = static_cast<float>(f(h * i, h * j, h * k));
  });
  return g;
}

// The largest error at points well inside of a unit cube with n cells an axis.
double error(Sampler sample, const Function& f, int n) {
  const double h = 1.0 / n;
  const Field<float> g = field_of(f, n + 1, n + 1, n + 1, h);
  double largest = 0;
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> place(0.3, 0.7);
  for (int point = 0; point < 3000; ++point) {
    const double x = place(engine), y = place(engine), z = place(engine);
    const float value =
        sample(g, static_cast<float>(x * n), static_cast<float>(y * n), static_cast<float>(z * n));
    largest = std::max(largest, std::abs(static_cast<double>(value) - f(x, y, z)));
  }
  return largest;
}

TEST(Interpolation, LinearIsExactForTrilinearFunctionsUpToTheFarEnd) {
  const auto f = [](double x, double y, double z) { return 2 + x - 3 * y * z + x * y * z; };
  const Field<float> g = field_of(f, 5, 4, 3);
  for (const auto& [x, y, z] : {std::array{0.0f, 0.0f, 0.0f}, std::array{4.0f, 3.0f, 2.0f},
                                std::array{3.5f, 2.25f, 1.75f}, std::array{0.25f, 3.0f, 0.5f}}) {
    EXPECT_FLOAT_EQ(sample_linear(g, x, y, z), static_cast<float>(f(x, y, z)));
  }
}

// Smooth and rising along every axis, so that the overshoot limiter has nothing to do. Halving the
// cells must divide the error by 4 and by 8, less what the next order still adds.
TEST(Interpolation, OrderOfAccuracy) {
  const auto f = [](double x, double y, double z) { return std::exp(2 * x + 1.5 * y + z); };
  EXPECT_NEAR(error(sample_linear, f, 12) / error(sample_linear, f, 24), 4, 0.4);
  EXPECT_GT(error(sample_cubic, f, 12) / error(sample_cubic, f, 24), 7);
  EXPECT_LT(error(sample_cubic, f, 12), 0.1 * error(sample_linear, f, 12));
}

TEST(Interpolation, CubicFallsBackToLinear) {
  const auto square = [](double x, double y, double z) { return x * x + y * y + z * z; };
  const Field<float> g = field_of(square, 8, 8, 8);
  // 4 cells are needed on each axis: the index may be 1 to n-3. At 5.5 the cubic is exact.
  EXPECT_FLOAT_EQ(sample_cubic(g, 5.5f, 3, 3), 5.5f * 5.5f + 18);
  for (const float x : {0.5f, 6.5f, -3.0f, 9.0f}) {
    EXPECT_EQ(sample_cubic(g, x, 3, 3), sample_linear(g, x, 3, 3));
    EXPECT_EQ(sample_cubic(g, 3, x, 3), sample_linear(g, 3, x, 3));
    EXPECT_EQ(sample_cubic(g, 3, 3, x), sample_linear(g, 3, 3, x));
  }
  // Beside a step the cubic would overshoot: 1 at the upper side, 0.5 between.
  const Field<float> step = field_of([](double x, double, double) { return x > 3; }, 8, 8, 8);
  EXPECT_EQ(sample_cubic(step, 4.5f, 3, 3), 1.0f);
  EXPECT_EQ(sample_cubic(step, 2.5f, 3, 3), 0.0f);
  EXPECT_FLOAT_EQ(sample_cubic(step, 3.5f, 3, 3), 0.5f);
}

// NaN counts as 0, infinity as the end that it lies beyond.
TEST(Interpolation, AnyCoordinateStaysInside) {
  Field<float> g(4, 5, 6);
  test::fill_random(g, 3);
  const float inf = std::numeric_limits<float>::infinity();
  const std::pair<float, float> cases[] = {{std::nanf(""), 0}, {inf, 9},    {-inf, 0},
                                           {1e30f, 9},         {-1e30f, 0}, {3e9f, 9}};
  for (const Sampler sample : {sample_linear, sample_cubic})
    for (const auto& [odd, same] : cases) {
      EXPECT_EQ(sample(g, odd, 1.5f, 1.5f), sample(g, same, 1.5f, 1.5f));
      EXPECT_EQ(sample(g, 1.5f, odd, 1.5f), sample(g, 1.5f, same, 1.5f));
      EXPECT_EQ(sample(g, 1.5f, 1.5f, odd), sample(g, 1.5f, 1.5f, same));
    }
}

}  // namespace
}  // namespace nbx
