#include "cache/frame_time.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace nbx {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The greatest common divisor is that of the whole parts.
// Numbers that are too large aren't kept.
TEST(Fraction, ReducesToLowestTerms) {
  const double cases[][4] = {{6, 4, 3, 2},       {6, -4, -3, 2},        {-6, -4, 3, 2},
                             {0, -7, 0, 1},      {1e-7, 5, 0, 1},       {-5, 1e-7, 1, 0},
                             {3, 0, 3, 0},       {0, 0, 0, 0},          {kInf, 2, kInf, 2},
                             {1, kInf, 1, kInf}, {2.5, 2, 1.25, 1},     {.5, .5, .5, .5},
                             {6e9, 4e9, 3, 2},   {-6e15, 4, -1.5e15, 1}};
  for (const auto& [n, d, num, den] : cases)
    EXPECT_EQ(normalize({n, d}), (Fraction{num, den})) << n << "/" << d;
  EXPECT_EQ(normalize({0x1p32 - 2, 6}), (Fraction{0x1p31 - 1, 3})) << "the last below the limit";
  EXPECT_EQ(normalize({0x1p32, 6}), (Fraction{0x1p31, 3})) << "the first above it";
  EXPECT_EQ(normalize({3e18, 6e18}), (Fraction{1 / 5e17, 1 / 5e17}));
  EXPECT_TRUE(std::isnan(normalize({kNaN, 1}).num));
  EXPECT_TRUE(std::isnan(normalize({1, kNaN}).den));
}

// Time and length as fractions, and the frame; without a length it is the numerator.
TEST(FrameTime, FrameNumber) {
  constexpr double kMax = std::numeric_limits<int>::max(), kMin = std::numeric_limits<int>::min();
  const double cases[][5] = {
      {-9, 2, 1, 1, -5},       {-5, 1, 1, 1, -5},     {3, 25, 1, 25, 3},
      {2, 25, 1, 30, 2},       {-1, 1000, 1, 25, -1}, {6006, 30000, 1001, 30000, 6},
      {7, 2, 0, 1, 7},         {1, 1, -1, 25, -25},   {1e15, 1, 1, 25, kMax},
      {-1e15, 1, 1, 25, kMin}, {kNaN, 1, 1, 25, 0},   {1, 1, 1, kInf, kMax}};
  for (const auto& [n, d, length, per, frame] : cases)
    EXPECT_EQ((FrameTime{{n, d}, {length, per}}.frame()), frame) << n;
  const double rates[][3] = {{1001, 30000, 30000 / 1001.0}, {0, 1, 0}, {-1, 25, 0}, {1, 0, 0}};
  for (const auto& [num, den, rate] : rates)
    EXPECT_EQ((FrameTime{{}, {num, den}}.frames_per_second()), rate) << num;
}

// A clock of binary fractions would miss frames; this one hits every frame of four hours.
TEST(FrameTime, ClockHitsEveryFrame) {
  for (const Fraction length :
       {Fraction{1, 25}, Fraction{2, 25}, Fraction{1001, 30000}, Fraction{1001, 24000},
        Fraction{33367, 1000000}, Fraction{999983, 999999937}}) {
    FrameTime time{normalize({-2000 * length.num, length.den}), length};
    int missed = 0;
    for (int frame = -2000; frame < 360000; ++frame, time = next_frame(time))
      missed += time.frame() != frame ||
                time.time != Fraction{frame * length.num, 1} * Fraction{1, length.den};
    EXPECT_EQ(missed, 0) << length.num << "/" << length.den;
    EXPECT_EQ(time.time, normalize({360000 * length.num, length.den}));
  }
}

TEST(Fraction, Arithmetic) {
  EXPECT_EQ((Fraction{1, 25} * Fraction{500000, 1000000}), (Fraction{1, 50}));
  EXPECT_EQ((Fraction{1, 6} + Fraction{1, 10}), (Fraction{4, 15}));
  // 29.97 frames a second at a time scale of 0.333333: sums beyond what a double holds.
  const Fraction slow = Fraction{1001, 30000} * Fraction{333333, 1000000};
  EXPECT_EQ(slow, (Fraction{111222111, 10000000000}));
  EXPECT_EQ((Fraction{100000 * slow.num, slow.den} + slow),
            (Fraction{100001 * slow.num, slow.den}));
  // The common denominator would be a number that a double can't hold.
  EXPECT_EQ((Fraction{1e12, 999983} + Fraction{1, 999983}), (Fraction{1e12 + 1, 999983}));
}

}  // namespace
}  // namespace nbx
