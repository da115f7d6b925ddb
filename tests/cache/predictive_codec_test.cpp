#include "cache/predictive_codec.h"

#include <bit>
#include <limits>
#include <random>

#include "cache/frame_bytes.h"
#include "support/support.h"
#include "util/isa.h"

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

// The plain form of the coder: one byte, one symbol, one cell after the other, the cells before in
// one window of floats with zeros at the borders.
class PlainCoder {
 public:
  PlainCoder() {
    starts_[65] = 65536;
    for (int s = 0; s < 65; ++s) running_[s] = 65536 / 65 + (s < 65536 % 65);
    update();
  }

  void symbol(int s) {
    const std::uint32_t t = range_ >> 16;
    low_ += t * starts_[s];
    range_ = t * (starts_[s + 1] - starts_[s]);
    if (left_ == 0 && more_ != 0) {
      left_ = more_;
      more_ = 0;
      ++step_;
    } else if (left_ == 0) {
      update();
    }
    --left_;
    running_[s] += step_;
    normalize();
  }

  void bits(std::uint32_t value, int n) {
    if (n > 16) {
      bits(value & 0xffff, 16);
      return bits(value >> 16, n - 16);
    }
    range_ >>= n;
    low_ += value * range_;
    normalize();
  }

  std::string finish() {
    for (int i = 0; i < 4; ++i) put();
    return out_;
  }

 private:
  void update() {
    rescale_ = std::min(2 * rescale_, 1024u);
    std::uint32_t missing = 65536;
    for (int s = 64; s >= 0; --s) {
      starts_[s] = starts_[s + 1] - running_[s];
      running_[s] = running_[s] / 2 | 1;
      missing -= running_[s];
    }
    step_ = missing / rescale_;
    more_ = missing % rescale_;
    left_ = rescale_ - more_;
  }
  void put() {
    out_ += static_cast<char>(low_ >> 24);
    low_ <<= 8;
  }
  void normalize() {
    while (((low_ + range_) ^ low_) < 1u << 24) {
      put();
      range_ <<= 8;
    }
    if (range_ >= 1u << 16) return;
    put();
    put();
    range_ = -low_;
  }

  std::uint32_t starts_[66] = {}, running_[65], rescale_ = 6, left_ = 0, more_ = 0, step_ = 0;
  std::uint32_t low_ = 0, range_ = 0xffffffff;
  std::string out_;
};

// One step of the sum by the processor's own instruction: the operands in this order, which decides
// about the bits where both are NaNs.
float add(float sum, float term, bool minus) {
#ifdef __x86_64__
  if (minus)
    asm("subss %1, %0" : "+x"(sum) : "x"(term));
  else
    asm("addss %1, %0" : "+x"(sum) : "x"(term));
  return sum;
#else
  return minus ? sum - term : sum + term;
#endif
}

std::uint32_t ordered(float f) {
  const std::uint32_t r = ~std::bit_cast<std::uint32_t>(f);
  return r >> 31 ? r ^ 0x7fffffff : r;
}

std::string encoded_plainly(const std::vector<float>& cells, const Vec3i& dims) {
  const std::size_t dy = static_cast<std::size_t>(dims[0]) + 1;
  const std::size_t dz = dy * (static_cast<std::size_t>(dims[1]) + 1);
  std::vector<float> a(dz);  // the first slice before
  PlainCoder coder;
  std::size_t next = 0;
  for (int k = 0; k < dims[2]; ++k) {
    a.resize(a.size() + dy);
    for (int j = 0; j < dims[1]; ++j) {
      a.push_back(0);
      for (int i = 0; i < dims[0]; ++i) {
        const auto before = [&](std::size_t distance) { return a[a.size() - distance]; };
        float sum = add(before(1 + dy + dz), before(1), false);
        sum = add(sum, before(dy + dz), true);
        sum = add(sum, before(dy), false);
        sum = add(sum, before(1 + dz), true);
        sum = add(sum, before(dz), false);
        sum = add(sum, before(1 + dy), true);
        const std::uint32_t p = ordered(sum), r = ordered(cells[next]);
        const std::uint32_t d = r > p ? r - p : p - r;
        int log = 0;
        while (d >> log > 1) ++log;
        coder.symbol(r == p ? 32 : r > p ? 33 + log : 31 - log);
        if (d != 0) coder.bits(d - (1u << log), log);
        a.push_back(cells[next++]);
      }
    }
  }
  return coder.finish();
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
  const auto wave = static_cast<float>(std::sin(0.1 * i + 0.2 * j) * std::cos(0.15 * k));
  const float odd = palette[bits / 16 % 7];
  const float kinds[] = {std::max(wave - 0.5f, 0.0f),
                         wave + 1e-3f * static_cast<float>(bits % 100),
                         2.5f,
                         std::bit_cast<float>(bits),
                         odd,
                         bits % 8 == 0 ? odd : wave};
  return kinds[kind];
}

TEST(PredictiveCodec, AgreesWithThePlainFormOnEveryInstructionSet) {
  std::mt19937 engine(1);
  const Vec3i sizes[] = {{1, 1, 1},    {1, 1, 5},    {2, 3, 1},    {1, 7, 3},   {1023, 2, 2},
                         {1024, 3, 2}, {1025, 2, 3}, {2049, 1, 2}, {37, 21, 14}};
  const Isa best = active_isa();
  for (const Vec3i& dims : sizes)
    for (int kind = 0; kind < 6; ++kind) {
      std::vector<float> cells;
      test::each_cell(dims, 0,
                      [&](int i, int j, int k) { cells.push_back(cell(kind, i, j, k, engine)); });
      const std::string plain = encoded_plainly(cells, dims);
      for (const Isa isa : {Isa::kBaseline, Isa::kAvx2, best}) {
        limit_isa(std::min(isa, best));
        ASSERT_EQ(encoded(cells, dims), plain) << kind << " of " << dims[0];
        for (const char padding : {'\0', '\xff'}) {
          std::vector<float> back(cells.size());
          ASSERT_TRUE(decodes(back, plain, dims, padding)) << kind << " of " << dims[0];
          ASSERT_EQ(std::memcmp(back.data(), cells.data(), 4 * cells.size()), 0) << kind;
        }
      }
      ASSERT_TRUE(predictive_fits(plain.size(), cells.size()));
    }
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
