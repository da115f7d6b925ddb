#include "math/field_reductions.h"

#include <limits>

#include "math/field_operators.h"
#include "support/support.h"

namespace nbx {

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

}  // namespace

// An extreme value anywhere must be seen: lanes, rest of a block, border of a block, last block.
TEST(FieldReductions, FindTheExtremeAnywhere) {
  const int n = 3 * 16384 + 21;
  Field<float> x(n, 1, 1);
  test::fill_random(x, 1);
  for (const int at : {0, 1, 15, 16, 16383, 16384, 16400, 49151, 49152, n - 5, n - 1}) {
    float& v = x[static_cast<std::size_t>(at)];
    const float before = v;
    v = -3;
    EXPECT_EQ(min(x), -3.0f) << at;
    EXPECT_EQ(infnorm(x), 3.0f) << at;
    v = 4;
    EXPECT_EQ(max(x), 4.0f) << at;
    v = -kInf;
    EXPECT_EQ(infnorm(x), kInf) << at;
    for (const float nan : {kNaN, -kNaN}) {
      v = nan;
      EXPECT_TRUE(std::isnan(infnorm(x))) << at;
    }
    v = before;
  }
}

// The sum in the order of the contract: 16 lanes in blocks of 16384, then the blocks.
TEST(FieldReductions, SumIsExactWhereDoublesAreAndTheSameForAnyThreads) {
  for (const int n : {5, 16, 16383, 16384, 16385, 70001}) {
    Field<float> x(n, 1, 1);
    double expected = 0;
    for (int i = 0; i < n; ++i) {
      // Multiples of 2^-20 below 2^7: every partial sum is exact in double, none in float.
      x[static_cast<std::size_t>(i)] = static_cast<float>(i % 127) + 0x1p-16f * (i % 5);
      expected += static_cast<double>(x[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(sum(x), expected) << n;
    test::fill_random(x, 7);
    const test::ThreadCount one(1);
    const double alone = sum(x);
    for (const int threads : {2, 3, 5}) {
      const test::ThreadCount many(threads);
      EXPECT_EQ(sum(x), alone) << n << " on " << threads;
    }
  }
}

TEST(FieldReductions, BoxHoldsWhatExceedsTheThreshold) {
  const test::ThreadCount threads(3);
  Field<float> x(9, 5, 7);
  set(x, 0.5f);
  EXPECT_TRUE(min_bbox(x, 0.5f).empty()) << "the threshold itself doesn't count";
  x(3, 4, 2) = -0.6f;
  EXPECT_EQ(min_bbox(x, 0.5f), (IntBox{{3, 4, 2}, {3, 4, 2}}));
  x(8, 1, 6) = 2;
  x(5, 0, 5) = kNaN;
  EXPECT_EQ(min_bbox(x, 0.5f), (IntBox{{3, 1, 2}, {8, 4, 6}}));
}

}  // namespace nbx
