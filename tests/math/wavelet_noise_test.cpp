#include "math/wavelet_noise.h"

#include <cmath>

#include "math/field_reductions.h"
#include "math/noise/wavelet_tile.h"
#include "support/support.h"

namespace nbx {
namespace {

using test::each_cell;

double mean_square(const Field<float>& f) {
  double sum = 0;
  for (std::size_t i = 0; i < f.count(); ++i) sum += double{f[i]} * f[i];
  return sum / static_cast<double>(f.count());
}

TEST(WaveletTile, SizesAndDeterminism) {
  for (const auto& [size, edge] : {std::pair{100, 128}, {3, 4}, {-9, 16}, {16, 16}}) {
    WaveletNoise noise, other;
    Field<float> flat, again;
    generate_tile(flat, noise, size, false, true);
    EXPECT_EQ(flat.dims(), Vec3i(edge, edge, 1));
    EXPECT_EQ(infnorm(flat), 1);
    const test::ThreadCount threads(3);
    generate_tile(again, other, size, false, true);
    EXPECT_TRUE(test::same_bits(flat, again));
    generate_tile(again, other, size, false, true);
    EXPECT_FALSE(test::same_bits(flat, again));
  }
}

// The part that a grid of half the resolution can represent vanishes: refine random coarse B-spline
// coefficients along each axis, as f(2m) = 3/4 c(m) + 1/4 c(m+1), f(2m+1) = 1/4 c(m) + 3/4 c(m+1).
// The analysis filter has only 32 taps of 6 digits, which leaves about 1e-3.
TEST(WaveletTile, HighPassRemovesTheCoarseGrid) {
  const int n = 32;
  const Field<float> coarse = test::random_field({n / 2, n / 2, n / 2}, 1);
  const auto weight = [](int at, int far) { return at % 2 == far ? 0.75f : 0.25f; };
  Field<float> tmp,
      tile = test::field_of({n, n, n}, [&](int x, int y, int z) {
        float sum = 0;
        for (int a = 0; a < 2; ++a)
          for (int b = 0; b < 2; ++b)
            for (int c = 0; c < 2; ++c)
              sum += weight(x, a) * weight(y, b) * weight(z, c) *
                     coarse((x / 2 + a) % (n / 2), (y / 2 + b) % (n / 2), (z / 2 + c) % (n / 2));
        return sum;
      });
  const double before = mean_square(tile);
  high_pass_wavelet(tile, tmp, true);
  EXPECT_LT(mean_square(tile), 1e-5 * before);
}

// The input is white noise of variance 1. One of 8 waves is in the low band, so 7/8 remain, and
// adding the shifted copy doubles them. Cells of all parities get the same variance. With 2^15
// correlated cells of each, 4 % are above three standard deviations.
TEST(WaveletTile, Variance) {
  WaveletNoise noise;
  Field<float> tile;
  generate_tile(tile, noise, 64, true, false);
  for (int parity = 0; parity < 8; ++parity) {
    const Field<float> some = test::field_of({32, 32, 32}, [&](int x, int y, int z) {
      return tile(2 * x + (parity & 1), 2 * y + (parity >> 1 & 1), 2 * z + (parity >> 2));
    });
    EXPECT_NEAR(mean_square(some), 1.75, 0.04 * 1.75) << parity;
  }
}

TEST(WaveletNoise, Samples) {
  WaveletNoise noise;
  EXPECT_EQ(evaluate(noise, {1, 2, 3}, 0), 0);  // no tile yet
  noise.tile_size = 8;
  advance_tile(noise, 0, true, false);
  const Field<float>& tile = noise.tile;
  // Halfway between two cells both have the weight 1/2; on the other axes the weights at whole
  // coordinates are 1/8, 3/4, 1/8.
  float expected = 0;
  const float w[3] = {0.125f, 0.75f, 0.125f};
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b)
      expected += w[a] * w[b] * 0.5f * (tile(2, 4 + a, (6 + b) % 8) + tile(3, 4 + a, (6 + b) % 8));
  EXPECT_NEAR(evaluate(noise, {2.5f, 5, 7}, 0), expected, 1e-5f);
  for (const Vec3f& p : {Vec3f(0.1f, 7.9f, 3.3f), Vec3f(-2.6f, 5.5f, 0), Vec3f(7.5f, 7.5f, 7.5f)}) {
    const float h = 1.0f / 64;
    for (int axis = 0; axis < 3; ++axis) {
      Vec3f low = p, high = p, far = p;
      low[axis] -= h;
      high[axis] += h;
      far[axis] -= 1024;  // 128 periods; the coordinate keeps 13 bits below 1, so within 2e-4
      EXPECT_NEAR(evaluate(noise, far, 0), evaluate(noise, p, 0), 2e-3f);
      // Between knots the noise is quadratic, where central differences are exact; across one they
      // miss a quarter of h times the jump of the second derivative.
      const float slope = (evaluate(noise, low, 0) - evaluate(noise, high, 0)) / (2 * h);
      EXPECT_NEAR(evaluate(noise, p, axis + 1), slope, 0.25f * h * 8 * infnorm(tile));
    }
  }
  EXPECT_TRUE(std::isfinite(evaluate(noise, {3e9f, -1e30f, 1e12f}, 0)));
  EXPECT_TRUE(std::isnan(evaluate(noise, {1, std::nanf(""), 1}, 0)));
}

TEST(WaveletNoise, FieldsEqualPoints) {
  WaveletNoise noise;
  advance_tile(noise, 0.25f, true, false);
  NoiseParams params;
  params.frequency = 0.37f;
  params.amplitude = 2;
  params.persistence = 0.5f;
  params.offset = {3, -70.5f, 1000};
  for (float bands : {0.25f, 1.0f, 1.5f, 3.0f}) {
    params.bands = bands;
    Field<float> field = test::random_field({70, 5, 4}, 1),
                 again = test::random_field({70, 5, 4}, 2);
    fractal3D_field(field, noise, params, true);
    const test::ThreadCount threads(3);
    fractal3D_field(again, noise, params, true);
    EXPECT_TRUE(test::same_bits(field, again));
    each_cell(field.dims(), 0, [&](int i, int j, int k) {
      EXPECT_EQ(field(i, j, k), fractal3D(noise, params, {i, j, k}, 0)) << bands;
    });
  }
  // One band and half of a second one, computed by hand.
  params.bands = 1.5f;
  const Vec3f p(2, 3, 4), at = (p + params.offset) * 0.37f;
  EXPECT_FLOAT_EQ(fractal3D(noise, params, p, 2),
                  2 * evaluate(noise, at, 2) + 2 * 0.5f * 0.5f * evaluate(noise, at * 2.0f, 2));
}

TEST(WaveletNoise, TilesOfSuccessiveTimes) {
  WaveletNoise source;
  source.tile_size = 8;
  Field<float> tiles[6];
  for (Field<float>& tile : tiles) generate_tile(tile, source, 8, true, false);
  const auto is = [&](const WaveletNoise& noise, int a, int b, float s) {
    const float blend = (1 - s) * tiles[a][77] + s * tiles[b][77];
    return test::same_bits(noise.tile_a, tiles[a]) && test::same_bits(noise.tile_b, tiles[b]) &&
           noise.tile[77] == blend;
  };
  // Before each step: noise restored from the state continues like the original.
  const auto advance = [](WaveletNoise& noise, float time) {
    WaveletNoise back;
    back.tile_size = 8;
    restore_noise(back, noise_state(noise), true, false);
    EXPECT_TRUE(noise_state(back) == noise_state(noise)) << "before " << time;
    advance_tile(noise, time, true, false);
    advance_tile(back, time, true, false);
    EXPECT_TRUE(test::same_bits(back.tile, noise.tile)) << time;
  };
  WaveletNoise noise;
  noise.tile_size = 8;
  advance(noise, 0);
  EXPECT_TRUE(is(noise, 0, 1, 0));
  advance(noise, -0.75f);
  EXPECT_TRUE(is(noise, 0, 1, 0.75f));
  advance(noise, 1.5f);
  EXPECT_TRUE(is(noise, 1, 2, 0.5f));
  advance(noise, 0.5f);  // back: tile 1 is that of time 1 again, and 3 is new
  EXPECT_TRUE(is(noise, 3, 1, 0.5f));
  WaveletNoise late;  // skips two tiles
  late.tile_size = 8;
  advance(late, 3.25f);
  EXPECT_TRUE(is(late, 2, 3, 0.25f));
  for (const float time : {9000.5f, 9000.75f, 2.5f}) advance(late, time);

  // By the time only: one step on, a jump, a long jump, one step back, and further back.
  WaveletNoise any;
  any.tile_size = 8;
  for (const float t : {0.5f, 1.5f, 1.75f, 4.25f, 3.5f, 0.0f, 2.25f, 8192 + 4.5f}) {
    const int i = static_cast<int>(t) % 8192;
    advance_tile_from_start(any, -t, true, false);
    EXPECT_TRUE(is(any, i, i + 1, t - std::floor(t))) << t;
  }
}

}  // namespace
}  // namespace nbx
