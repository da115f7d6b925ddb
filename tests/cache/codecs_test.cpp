// The two codecs of frame files. Files are older than the code that reads them, so their bytes are
// fixed here.
#include <bit>
#include <limits>
#include <random>

#include "cache/codecs/predictive_codec.h"
#include "cache/codecs/run_length_codec.h"
#include "cache/frame_bytes.h"
#include "support/support.h"

namespace nbx {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::string encoded(const std::vector<float>& cells, const Vec3i& dims) {
  ByteBuffer buffer;
  const std::size_t size = predictive_encode(buffer, cells.data(), dims);
  return std::string(buffer.data(), size);
}

// The padding is filled with bytes that could continue the payload.
bool decodes(std::vector<float>& cells, const std::string& payload, const Vec3i& dims,
             char padding = '\x55') {
  const std::string padded = payload + std::string(kPredictivePadding, padding);
  return predictive_decode(cells.data(), padded.data(), payload.size(), dims);
}

TEST(PredictiveCodec, BytesAreThoseWorkedOutByHand) {
  EXPECT_EQ(encoded({}, {0, 1, 1}), "");
  EXPECT_EQ(encoded({0.0f}, {1, 1, 1}), "\x7e\x0f\x81\xf0");
  EXPECT_EQ(encoded({1.5f, -2.25f}, {2, 1, 1}),
            std::string("\xf4\x2f\x0f\xb7\x22\x7c\x08\xef\xb0\xfa\xc0\0", 12));
}

// The kinds of content: exact zeros beside smooth and rough parts, constants, noise in all bits
// (with all kinds of NaNs), and many infinities, NaNs and zeros of both signs.
float cell(int kind, int i, int j, int k, std::mt19937& engine) {
  const std::uint32_t bits = engine();
  const float nans[] = {std::bit_cast<float>(0x7fc00000 + bits % 9),
                        std::bit_cast<float>(0xff800001u + bits % 9)};
  const float palette[] = {0.0f, -0.0f, 1.0f, kInf, -kInf, nans[0], nans[1]};
  // Rounded, so that all mathematical libraries give the same bits.
  const auto wave =
      static_cast<float>(std::round(256 * std::sin(0.1 * i + 0.2 * j) * std::cos(0.15 * k)) / 256);
  const float odd = palette[bits / 16 % 7];
  const float kinds[] = {std::max(wave - 0.5f, 0.0f),
                         wave + 1e-3f * static_cast<float>(bits % 100),
                         2.5f,
                         std::bit_cast<float>(bits),
                         odd,
                         bits % 8 == 0 ? odd : wave};
  return kinds[kind];
}

// For each kind the checksum of the bytes of grids of all sizes. The checksums come from a coder
// that took one bit, one symbol and one cell after the other.
TEST(PredictiveCodec, BytesNeverChangeOnAnyInstructionSet) {
  constexpr std::uint64_t kSums[] = {0x400352ae5e2789ac, 0x29417c6bb9b0c3b5, 0x97a542ee85e1f56d,
                                     0xda2d0bf6bda0a320, 0x4bcf35327042b32e, 0xe4933a3b25e0e865};
  std::uint64_t sums[6];
  std::fill_n(sums, 6, test::kEmptySum);
  std::mt19937 engine(1);
  const Vec3i sizes[] = {{1, 1, 1},    {1, 1, 5},    {2, 3, 1},    {1, 7, 3},   {1023, 2, 2},
                         {1024, 3, 2}, {1025, 2, 3}, {2049, 1, 2}, {37, 21, 14}};
  for (const Vec3i& dims : sizes)
    for (int kind = 0; kind < 6; ++kind) {
      std::vector<float> cells;
      test::each_cell(dims, 0,
                      [&](int i, int j, int k) { cells.push_back(cell(kind, i, j, k, engine)); });
      const std::string payload = encoded(cells, dims);
      sums[kind] = test::sum_with(sums[kind], payload);
      test::everywhere([&] {
        ASSERT_EQ(encoded(cells, dims), payload) << kind << " of " << dims[0];
        for (const char padding : {'\0', '\xff'}) {
          std::vector<float> back(cells.size());
          ASSERT_TRUE(decodes(back, payload, dims, padding)) << kind << " of " << dims[0];
          ASSERT_EQ(std::memcmp(back.data(), cells.data(), 4 * cells.size()), 0) << kind;
        }
      });
      ASSERT_TRUE(predictive_fits(payload.size(), cells.size()));
    }
  for (int kind = 0; kind < 6; ++kind) EXPECT_EQ(sums[kind], kSums[kind]) << kind;
}

// The buffer is smaller than noise needs, and the best compressible grids reach the bound on cells.
TEST(PredictiveCodec, Sizes) {
  std::mt19937 engine(2);
  std::vector<float> noise(1 << 16), zeros(1 << 24);
  for (float& f : noise) f = cell(3, 0, 0, 0, engine);
  const std::size_t noisy = encoded(noise, {64, 32, 32}).size();
  EXPECT_GT(noisy, 4 * noise.size());
  EXPECT_LT(noisy, 5 * noise.size());
  const std::string best = encoded(zeros, {256, 256, 256});
  EXPECT_TRUE(predictive_fits(best.size(), zeros.size()));
  EXPECT_FALSE(predictive_fits(best.size() / 2, zeros.size()));
  EXPECT_TRUE(predictive_fits(0, 0));
  EXPECT_FALSE(predictive_fits(4, 0));
  EXPECT_FALSE(predictive_fits(0, 1));
}

TEST(PredictiveCodec, RefusesOtherLengthsAndSurvivesAnyBytes) {
  std::mt19937 engine(3);
  const Vec3i dims{11, 6, 5};
  std::vector<float> cells, back(330);
  for (int i = 0; i < 330; ++i) cells.push_back(cell(1, i, 0, 0, engine));
  const std::string good = encoded(cells, dims);
  for (std::size_t length = 0; length < good.size(); ++length)
    ASSERT_FALSE(decodes(back, good.substr(0, length), dims)) << length;
  EXPECT_FALSE(decodes(back, good + '\0', dims));
  EXPECT_TRUE(decodes(back, good, dims));
  // A cell so far above its prediction that the difference wraps around.
  const std::string wrapped("\x00\x0b\xcf\x9c\xa9\xfa\xc0\0", 8);
  EXPECT_FALSE(decodes(back, wrapped, {1, 1, 1}));

  int refused = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = good;
    bytes[engine() % bytes.size()] ^= static_cast<char>(1 + engine() % 255);
    if (round % 2) std::generate(bytes.begin(), bytes.end(), [&] { return engine() & 0xff; });
    refused += !decodes(back, bytes, dims);
  }
  EXPECT_GT(refused, 19000);
}

std::string run_lengths(std::vector<float> cells) {
  cells.shrink_to_fit();  // so that a sanitizer finds a search beyond the field
  std::vector<char> out(rle_bound(cells.size()));
  return std::string(out.data(), rle_encode(out.data(), cells.data(), cells.size()));
}

std::vector<float> from_run_lengths(const std::string& payload, std::size_t cells) {
  std::vector<float> out(cells);
  rle_decode(out.data(), payload.data(), payload.size());
  return out;
}

// Few different values, so that runs of every length start and end at every place of the search
// loops' blocks. The checksum comes from a coder that took one cell after the other.
TEST(RunLengthCodec, BytesNeverChange) {
  const std::string zeros = test::Bytes().i32({-4}).f32({0.0f}).text();
  EXPECT_EQ(run_lengths({0.0f, 0.0f, -0.0f, -0.0f}), zeros) << "both zeros are one run";
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
    const std::string payload = run_lengths(cells);
    sum = test::sum_with(sum, payload);
    ASSERT_LE(payload.size(), rle_bound(cells.size()));
    ASSERT_TRUE(rle_fits(payload.data(), payload.size(), cells.size()));
    const std::vector<float> back = from_run_lengths(payload, cells.size());
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
  EXPECT_EQ(from_run_lengths(good, 7), (std::vector<float>{1, 2, 3, 3, 3, 3, 3}));
  EXPECT_FALSE(rle_fits(good.data(), good.size(), 6));
  EXPECT_FALSE(rle_fits(good.data(), good.size(), 8));
  // Everything except the count of 0 at the end is needed.
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
