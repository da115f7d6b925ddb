#include "math/wavelet_noise.h"

#include <cmath>
#include <vector>

#include <omp.h>

namespace nbx {

namespace {

// The cells and the B-spline weights for a coordinate on one axis of the tile.
struct AxisSample {
  int cell;  // the first of three cells, wrapped
  float w[3];
};

// q = p - 1/2, c = ceil(q), t = c - q; the cells c - 1, c, c + 1 have the weights
//
//     t^2 / 2     1 - (the others)     (1 - t)^2 / 2            of the noise
//     t           1 - 2t               -(1 - t)                 of its slope against the axis
AxisSample sample_axis(float p, int n, bool slope) {
  float q = p - 0.5f;
  if (!(std::abs(q) < 1e9f)) q = std::fmod(q, static_cast<float>(n));  // c must fit an int
  if (std::isnan(q)) return {0, {q, q, q}};
  int c = static_cast<int>(q);
  if (static_cast<float>(c) < q) ++c;
  const float t = static_cast<float>(c) - q, s = 1 - t;
  const int cell = (c - 1) & (n - 1);
  if (slope) return {cell, {t, 1 - 2 * t, -s}};
  const float low = 0.5f * t * t, high = 0.5f * s * s;
  return {cell, {low, 1 - low - high, high}};
}

float weighted(const float (&w)[3], float a, float b, float c) {
  return (w[0] * a + w[1] * b) + w[2] * c;
}

// The nine rows of a tile along x that meet in one (y, z), and their weights.
class TileRows {
 public:
  TileRows(const Field<float>& tile, const AxisSample& y, const AxisSample& z) : y_(y), z_(z) {
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b)
        rows_[a][b] = &tile(0, (y.cell + a) & (tile.ny() - 1), (z.cell + b) & (tile.nz() - 1));
  }
  float operator()(int x) const {
    return weighted(y_.w, along_z(rows_[0], x), along_z(rows_[1], x), along_z(rows_[2], x));
  }

 private:
  float along_z(const float* const (&r)[3], int x) const {
    return weighted(z_.w, r[0][x], r[1][x], r[2][x]);
  }
  const AxisSample y_, z_;
  const float* rows_[3][3];
};

// The samples of n_cells neighboring cells; coordinates depend on one axis only.
std::vector<AxisSample> sample_cells(int n_cells, float offset, float frequency, int n) {
  std::vector<AxisSample> samples;
  samples.reserve(n_cells);
  for (int i = 0; i < n_cells; ++i)
    samples.push_back(sample_axis((static_cast<float>(i) + offset) * frequency, n, false));
  return samples;
}

}  // namespace

float evaluate(const WaveletNoise& noise, const Vec3f& p, int derivative) {
  const Field<float>& tile = noise.tile;
  if (tile.count() == 0) return 0;
  const AxisSample x = sample_axis(p[0], tile.nx(), derivative == 1);
  const AxisSample y = sample_axis(p[1], tile.ny(), derivative == 2);
  const AxisSample z = sample_axis(p[2], tile.nz(), derivative == 3);
  const TileRows row(tile, y, z);
  const int wrap = tile.nx() - 1;
  return weighted(x.w, row(x.cell), row((x.cell + 1) & wrap), row((x.cell + 2) & wrap));
}

void noise_field(Field<float>& field, const WaveletNoise& noise, float frequency, float amplitude,
                 const Vec3f& offset) {
  const Field<float>& tile = noise.tile;
  if (tile.count() == 0) return;
  const int n = tile.nx(), nx = field.nx(), ny = field.ny(), nz = field.nz();
  const auto xs = sample_cells(nx, offset[0], frequency, n);
  const auto ys = sample_cells(ny, offset[1], frequency, tile.ny());
  const auto zs = sample_cells(nz, offset[2], frequency, tile.nz());
  // One row of the tile per thread, with its first two cells repeated at the end, and spare room so
  // that no two threads write to one cache line.
  const std::size_t length = n + 2 + 32;
  std::vector<float> scratch(omp_get_max_threads() * length);
#pragma omp parallel for schedule(static)
  for (int k = 0; k < nz; ++k) {
    float* r = scratch.data() + omp_get_thread_num() * length;
    for (int j = 0; j < ny; ++j) {
      const TileRows row(tile, ys[j], zs[k]);
      for (int i = 0; i < n; ++i) r[i] = row(i);
      r[n] = r[0];
      r[n + 1] = r[1];
      float* dst = &field(0, j, k);
      for (int i = 0; i < nx; ++i) {
        const AxisSample& x = xs[i];
        const float* at = r + x.cell;
        dst[i] += amplitude * weighted(x.w, at[0], at[1], at[2]);
      }
    }
  }
}

}  // namespace nbx
