#include "cache/frame_time.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace nbx {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Fraction, ReducesToLowestTerms) {
  const struct {
    Fraction in, out;
  } cases[] = {
      {{6, 4}, {3, 2}},
      {{6, -4}, {-3, 2}},
      {{-6, -4}, {3, 2}},
      {{0, -7}, {0, 1}},
      {{1e-7, 5}, {0, 1}},
      {{-5, 1e-7}, {1, 0}},
      {{3, 0}, {3, 0}},
      {{0, 0}, {0, 0}},
      {{kInf, 2}, {kInf, 2}},
      {{1, kInf}, {1, kInf}},
      {{2.5, 2}, {1.25, 1}},     // gcd of the whole parts, 2
      {{0.5, 0.5}, {0.5, 0.5}},  // no whole part to divide by
      {{6e9, 4e9}, {3, 2}},      // beyond 32 bits
      {{-6e15, 4}, {-1.5e15, 1}},
      {{4294967294.0, 6}, {2147483647.0, 3}},    // the last below the limit
      {{4294967296.0, 6}, {2147483648.0, 3}},    // the first above it
      {{3e18, 6e18}, {1.0 / 5e17, 1.0 / 5e17}},  // too large to be kept
  };
  for (const auto& c : cases) EXPECT_EQ(normalize(c.in), c.out) << c.in.num << "/" << c.in.den;
  EXPECT_TRUE(std::isnan(normalize({kNaN, 1}).num));
  EXPECT_TRUE(std::isnan(normalize({1, kNaN}).den));
}

TEST(Fraction, Compares) {
  EXPECT_TRUE(fraction_less({1, 3}, {1, 2}));
  EXPECT_FALSE(fraction_less({1, 2}, {1, 3}));
  EXPECT_FALSE(fraction_less({2, 4}, {1, 2}));
  EXPECT_TRUE(fraction_less({-3, 25}, {-2, 25}));
  EXPECT_TRUE(fraction_less({7, 25}, {1, 0}));  // infinity
  EXPECT_FALSE(fraction_less({1, 0}, {7, 25}));
}

TEST(FrameTime, FrameNumber) {
  const struct {
    FrameTime time;
    int frame;
  } cases[] = {
      {{{-9, 2}, {1, 1}}, -5},
      {{{-5, 1}, {1, 1}}, -5},
      {{{3, 25}, {1, 25}}, 3},
      {{{2, 25}, {1, 30}}, 2},  // 2.4 frames
      {{{-1, 1000}, {1, 25}}, -1},
      {{{6006, 30000}, {1001, 30000}}, 6},
      {{{7, 2}, {0, 1}}, 7},  // no length: the numerator
      {{{1, 1}, {-1, 25}}, -25},
      {{{1e15, 1}, {1, 25}}, std::numeric_limits<int>::max()},
      {{{-1e15, 1}, {1, 25}}, std::numeric_limits<int>::min()},
      {{{kNaN, 1}, {1, 25}}, 0},
      {{{1, 1}, {1, kInf}}, std::numeric_limits<int>::max()},
  };
  for (const auto& c : cases) EXPECT_EQ(c.time.frame(), c.frame) << c.time.time.num;
}

// A clock of binary fractions would miss frames; this one hits each of four hours.
TEST(FrameTime, ClockHitsEveryFrame) {
  for (const Fraction length : {Fraction{1, 25}, Fraction{1001, 30000}, Fraction{33367, 1000000}}) {
    FrameTime time{normalize({-2 * length.num, length.den}), length};
    int missed = 0;
    for (int frame = -2; frame < 360000; ++frame, time = next_frame(time))
      missed += time.frame() != frame;
    EXPECT_EQ(missed, 0) << length.num << "/" << length.den;
    EXPECT_EQ(time.time, normalize({360000 * length.num, length.den}));
  }
}

TEST(Fraction, Arithmetic) {
  EXPECT_EQ((Fraction{1, 25} * Fraction{500000, 1000000}), (Fraction{1, 50}));
  EXPECT_EQ((Fraction{1, 6} + Fraction{1, 10}), (Fraction{4, 15}));
  // The common denominator would be a number that a double can't hold.
  EXPECT_EQ((Fraction{1e12, 999983} + Fraction{1, 999983}), (Fraction{1e12 + 1, 999983}));
}

}  // namespace
}  // namespace nbx
