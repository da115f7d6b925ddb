#include "util/format_size.h"

#include <limits>

#include <gtest/gtest.h>

namespace nbx {

TEST(FormatSize, UnitsChangeAt1025) {
  constexpr std::uint64_t kKilo = 1024, kMega = kKilo * 1024, kGiga = kMega * 1024;
  const struct {
    std::uint64_t bytes;
    int decimals;
    const char* text;
  } cases[] = {
      {0, 2, "0.00KB"},
      {1, 4, "0.0010KB"},
      {1536, 2, "1.50KB"},
      {kMega, 2, "1024.00KB"},
      {1025 * kKilo - 512, 1, "1024.5KB"},
      {1025 * kKilo, 3, "1.001MB"},
      {kMega + kMega / 2, 0, "2MB"},
      {1025 * kMega - 1, 0, "1025MB"},
      {1025 * kMega, 2, "1.00GB"},
      {5 * kGiga / 4, 2, "1.25GB"},
      {std::numeric_limits<std::uint64_t>::max(), 0, "17179869184GB"},
  };
  for (const auto& c : cases) EXPECT_EQ(format_size(c.bytes, c.decimals), c.text) << c.bytes;
}

}  // namespace nbx
