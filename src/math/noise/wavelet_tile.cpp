#include "math/noise/wavelet_tile.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include <omp.h>

#include "math/field_operators.h"
#include "math/field_reductions.h"

namespace nbx {

namespace {

// The analysis filter of the quadratic B-spline wavelet, cut to 32 taps, from the paper's appendix.
constexpr int kTaps = 32;
constexpr float kAnalysis[kTaps] = {
    0.000334f,  -0.001528f, 0.000410f,  0.003545f,  -0.000938f, -0.008233f, 0.002172f,  0.019120f,
    -0.005040f, -0.044412f, 0.011655f,  0.103311f,  -0.025936f, -0.243780f, 0.033979f,  0.655340f,
    0.655340f,  0.033979f,  -0.243780f, -0.025936f, 0.103311f,  0.011655f,  -0.044412f, -0.005040f,
    0.019120f,  0.002172f,  -0.008233f, -0.000938f, 0.003546f,  0.000410f,  -0.001528f, 0.000334f};

// The low band of a periodic line of n cells, in place. `line` and `half` are scratch.
//
//     half(m)      = sum over k of a(k) f(2m + k - 16)                     downsampling
//     f(2m)        = 0.75 half(m) + 0.25 half(m+1)                         refinement of B-splines
//     f(2m + 1)    = 0.25 half(m) + 0.75 half(m+1)
void low_pass_line(float* f, std::ptrdiff_t step, int n, float* line, float* half) {
  for (int i = 0; i < n; ++i) line[i] = f[i * step];
  for (int m = 0; m < n / 2; ++m) {
    float sum = 0;
    for (int k = 0; k < kTaps; ++k) sum += kAnalysis[k] * line[(2 * m + k - kTaps / 2) & (n - 1)];
    half[m] = sum;
  }
  for (int m = 0; m < n / 2; ++m) {
    const float a = half[m], b = half[(m + 1) & (n / 2 - 1)];
    f[2 * m * step] = 0.75f * a + 0.25f * b;
    f[(2 * m + 1) * step] = 0.25f * a + 0.75f * b;
  }
}

void low_pass_axis(Field<float>& field, int axis) {
  const int n = field.dims()[axis];
  const int across = axis == 0 ? 1 : 0, along = axis == 2 ? 1 : 2;
  const int n_across = field.dims()[across], n_along = field.dims()[along];
  const std::ptrdiff_t steps[3] = {1, field.nx(), std::ptrdiff_t{field.nx()} * field.ny()};
  const std::size_t size = n;
  // One line and its half per thread; nothing may throw inside the parallel region.
  std::vector<float> scratch(std::size_t{2} * omp_get_max_threads() * size);
#pragma omp parallel for schedule(static)
  for (int b = 0; b < n_along; ++b)
    for (int a = 0; a < n_across; ++a) {
      float* line = scratch.data() + std::size_t{2} * omp_get_thread_num() * size;
      low_pass_line(field.data() + a * steps[across] + b * steps[along], steps[axis], n, line,
                    line + size);
    }
}

// A number in [0, 1).
float uniform(std::mt19937& rng) {
  for (;;) {
    const float u = static_cast<float>(rng()) * 2.3283064e-10f;
    if (u < 1) return u;
  }
}

// White noise of variance 1, by Box and Muller (1958).
void fill_gaussian(Field<float>& out, std::mt19937& rng) {
  for (std::size_t i = 0; i + 1 < out.count(); i += 2) {
    const float u1 = uniform(rng), u2 = uniform(rng);
    const float r = std::sqrt(-2 * std::log(1 - u2));
    const float a = 2 * std::numbers::pi_v<float> * u1;
    out[i] = r * std::cos(a);
    out[i + 1] = r * std::sin(a);
  }
}

// out += out shifted by an odd number of cells. Even and odd cells have different variances, since
// the low band is on even cells; in the sum all cells have the same variance.
void add_shifted(Field<float>& out, Field<float>& tmp) {
  tmp.copy(out);
  const int n = out.nx(), nz = out.nz(), m = n / 2 + 1;
#pragma omp parallel for schedule(static)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < n; ++j) {
      const float* from = &tmp(0, (j + m) & (n - 1), (k + m) & (nz - 1));
      float* row = &out(0, j, k);
      for (int i = 0; i < n; ++i) row[i] += from[(i + m) & (n - 1)];
    }
}

}  // namespace

void generate_tile(Field<float>& out, WaveletNoise& noise, int size, bool three_d, bool normalize) {
  const unsigned edge = static_cast<unsigned>(std::abs(static_cast<long>(size)));
  const int n = static_cast<int>(std::bit_ceil(std::max(edge, 4u)));
  out.resize(n, n, three_d ? n : 1);
  fill_gaussian(out, noise.rng);
  const FieldHandle tmp = acquire_field();
  high_pass_wavelet(out, *tmp, true);
  add_shifted(out, *tmp);
  if (normalize) scal(out, 1 / infnorm(out), out);
}

void high_pass_wavelet(Field<float>& tile, Field<float>& tmp, bool three_d) {
  tmp.copy(tile);
  low_pass_axis(tmp, 0);
  low_pass_axis(tmp, 1);
  if (three_d && tile.nz() > 1) low_pass_axis(tmp, 2);
  axpy(tile, -1, tmp, tile);
}

void advance_tile(WaveletNoise& noise, float t, bool three_d, bool normalize) {
  const int n = noise.tile_size;
  const Vec3i dims(n, n, three_d ? n : 1);
  // NaN counts as 0.
  const float time = std::min(std::max(0.0f, std::abs(t)), 1e9f);
  const int i = static_cast<int>(time);
  const bool have_tiles = noise.tile_a.dims() == dims && noise.tile_b.dims() == dims;
  const int from = have_tiles ? noise.tile_time : i - 2;
  const auto generate_a = [&] {
    noise.before_a = noise.rng;
    generate_tile(noise.tile_a, noise, n, three_d, normalize);
  };
  const auto generate_b = [&] {
    noise.before_b = noise.rng;
    generate_tile(noise.tile_b, noise, n, three_d, normalize);
  };
  const auto swap = [&] {
    noise.tile_a.swap(noise.tile_b);
    std::swap(noise.before_a, noise.before_b);
  };
  if (i == from + 1) {
    swap();
    generate_b();
  } else if (i == from - 1) {
    swap();
    generate_a();
  } else if (i != from) {
    // A run that starts late first draws the numbers of the times before. The limit keeps that
    // within seconds; times beyond it use the same numbers.
    constexpr int kMostSkipped = 1 << 13;
    const auto numbers = static_cast<unsigned long long>(n) * static_cast<unsigned>(n) *
                         static_cast<unsigned>(dims[2]);
    noise.rng.discard(numbers * static_cast<unsigned>(std::clamp(i - 1, 0, kMostSkipped)));
    generate_a();
    generate_b();
  }
  noise.tile_time = i;
  const float s = time - static_cast<float>(i);
  noise.tile.resize(dims);
  axpby(noise.tile, 1 - s, noise.tile_a, s, noise.tile_b);
}

void advance_tile_from_start(WaveletNoise& noise, float t, bool three_d, bool normalize) {
  constexpr float kTiles = 1 << 13;  // drawn again within seconds
  const float time = std::fmod(std::isfinite(t) ? std::abs(t) : 0.0f, kTiles);
  const int i = static_cast<int>(time), n = noise.tile_size;
  if (noise.tile_a.count() == 0 || i < noise.tile_time) {
    noise.rng.seed();
    noise.tile_time = -2;  // so that both tiles are drawn
    advance_tile(noise, 0, three_d, normalize);
  }
  // The tiles in between are drawn number by number, since some numbers take two draws.
  const std::ptrdiff_t numbers = std::ptrdiff_t{n} * n * (three_d ? n : 1);
  for (; noise.tile_time + 2 < i; ++noise.tile_time)
    for (std::ptrdiff_t k = 0; k < numbers; ++k) uniform(noise.rng);
  if (noise.tile_time + 1 < i) advance_tile(noise, static_cast<float>(i - 1), three_d, normalize);
  advance_tile(noise, time, three_d, normalize);
}

NoiseRows noise_rows(Field<float>& storage, const WaveletNoise& noise) {
  constexpr int kRepeated = 3;
  const Field<float>& tile = noise.tile;
  const int n = tile.nx();
  storage.resize(n + kRepeated, tile.ny(), tile.nz());
#pragma omp parallel for schedule(static)
  for (int k = 0; k < tile.nz(); ++k)
    for (int j = 0; j < tile.ny(); ++j) {
      std::copy_n(&tile(0, j, k), n, &storage(0, j, k));
      std::copy_n(&tile(0, j, k), kRepeated, &storage(n, j, k));
    }
  return {storage.data(), n, storage.nx()};
}

NoiseState noise_state(const WaveletNoise& noise) {
  return {noise.rng, noise.before_a, noise.before_b, noise.tile_time, noise.tile_a.count() > 0};
}

void restore_noise(WaveletNoise& noise, const NoiseState& state, bool three_d, bool normalize) {
  if (state.has_tiles) {
    noise.rng = noise.before_a = state.before_a;
    generate_tile(noise.tile_a, noise, noise.tile_size, three_d, normalize);
    noise.rng = noise.before_b = state.before_b;
    generate_tile(noise.tile_b, noise, noise.tile_size, three_d, normalize);
  }
  noise.rng = state.rng;
  noise.tile_time = state.tile_time;
}

}  // namespace nbx
