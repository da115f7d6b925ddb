#include "cache/run_length_codec.h"

#include <limits>
#include <random>

#include "cache/frame_bytes.h"
#include "support/support.h"

namespace nbx {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::string encoded(std::vector<float> cells) {
  cells.shrink_to_fit();  // a search that leaves the field would show
  std::vector<char> out(rle_bound(cells.size()));
  return std::string(out.data(), rle_encode(out.data(), cells.data(), cells.size()));
}

std::vector<float> decoded(const std::string& payload, std::size_t cells) {
  std::vector<float> out(cells);
  rle_decode(out.data(), payload.data(), payload.size());
  return out;
}

// Stretches of few values, so that runs of every length start and end at every place of the search
// loops' blocks. Files outlive the code: the sum is that of a coder that took one cell after the
// other.
TEST(RunLengthCodec, BytesNeverChange) {
  const std::string zeros = test::Bytes().i32({-4}).f32({0.0f}).text();
  EXPECT_EQ(encoded({0.0f, 0.0f, -0.0f, -0.0f}), zeros) << "both zeros are one run";
  std::mt19937 engine(1);
  const float palette[] = {0.0f, -0.0f, 1.0f, kNaN, -2.5f};
  std::size_t longest = 0;
  std::uint64_t sum = test::kEmptySum;
  for (int round = 0; round < 3000; ++round) {
    std::vector<float> cells;
    const std::size_t count = engine() % 300;
    const unsigned stretch = round % 3 == 0 ? 80 : 4;
    while (cells.size() < count) {
      const float value = palette[engine() % 5];
      cells.insert(cells.end(), 1 + engine() % stretch, value);
    }
    const std::string payload = encoded(cells);
    sum = test::sum_with(sum, payload);
    ASSERT_LE(payload.size(), rle_bound(cells.size()));
    ASSERT_TRUE(rle_fits(payload.data(), payload.size(), cells.size()));
    const std::vector<float> back = decoded(payload, cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i)
      ASSERT_TRUE(back[i] == cells[i] || (std::isnan(back[i]) && std::isnan(cells[i]))) << i;
    longest = std::max(longest, cells.size());
  }
  EXPECT_GT(longest, 250u);
  EXPECT_EQ(sum, 0x47f538076d5cfc34u);
}

TEST(RunLengthCodec, RefusesWhatDoesNotFillTheGrid) {
  using test::Bytes;
  const std::string good = Bytes().i32({2}).f32({1, 2}).i32({0, -5}).f32({3}).i32({0}).text();
  EXPECT_TRUE(rle_fits(good.data(), good.size(), 7));
  EXPECT_EQ(decoded(good, 7), (std::vector<float>{1, 2, 3, 3, 3, 3, 3}));
  EXPECT_FALSE(rle_fits(good.data(), good.size(), 6));
  EXPECT_FALSE(rle_fits(good.data(), good.size(), 8));
  // All but the count of 0 at the end is needed.
  for (std::size_t cut = 0; cut < good.size() - 4; ++cut)
    EXPECT_FALSE(rle_fits(good.data(), cut, 7)) << cut;

  const std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  const std::string huge = Bytes().i32({lowest}).f32({3}).i32({lowest}).f32({3}).text();
  EXPECT_TRUE(rle_fits(huge.data(), huge.size(), std::uint64_t{1} << 32));
  const std::string literal = Bytes().i32({std::numeric_limits<std::int32_t>::max(), 1}).text();
  EXPECT_FALSE(rle_fits(literal.data(), literal.size(), 0x7fffffff));
}

}  // namespace
}  // namespace nbx
