#include "cache/predictive_codec.h"

#include <bit>
#include <limits>
#include <random>

#include "cache/frame_bytes.h"
#include "support/support.h"

namespace nbx {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();

std::string encoded(const std::vector<float>& cells, const Vec3i& dims) {
  ByteBuffer buffer;
  const std::size_t size = predictive_encode(buffer, cells.data(), dims);
  return std::string(buffer.data(), size);
}

// The padding is filled with what reads on as a payload.
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

// What grids are made of: exact zeros beside smooth and rough stretches, constants, noise of all
// bits (with NaNs of every kind), and infinities, NaNs and both zeros in a crowd.
float cell(int kind, int i, int j, int k, std::mt19937& engine) {
  const std::uint32_t bits = static_cast<std::uint32_t>(engine());
  const float nans[] = {std::bit_cast<float>(0x7fc00000 + bits % 9),
                        std::bit_cast<float>(0xff800001u + bits % 9)};
  const float palette[] = {0.0f, -0.0f, 1.0f, kInf, -kInf, nans[0], nans[1]};
  // Rounded, so that every mathematical library gives the same bits.
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

// Files outlive the code: for each kind the sum over the bytes of grids of all sizes, as a
// coder gave them that took one bit, one symbol and one cell after the other.
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

// The buffer holds less than noise needs, and the bound on cells is met by what compresses best.
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
  // A cell above its prediction by so much that it comes out below.
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

}  // namespace
}  // namespace nbx
