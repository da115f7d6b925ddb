#include "render/shade/detail_noise_kernels.h"

#include "math/lanes/lane_sampling.h"

namespace nbx::NBX_ISA {

namespace {

// The three cells around a coordinate, with their weights in the noise and in its slope (see
// evaluate() in math/wavelet_noise.h).
struct Axis {
  I cell;  // the first one, not wrapped
  F w[3], slope[3];
};

Axis axis_at(F p) {
  const F q = p - 0.5f;
  const I whole = truncate(q);
  const I c = whole - (to_float(whole) < q);  // rounded up: a mask is -1 where it holds
  const F t = to_float(c) - q, s = 1.0f - t;
  const F low = 0.5f * t * t, high = 0.5f * s * s;
  return {c - 1, {low, 1.0f - low - high, high}, {t, 1.0f - 2.0f * t, -s}};
}

struct Slopes {
  F x, y, z;
};

// The noise's slopes along all axes. The compiler removes those that the caller doesn't use.
Slopes slopes_at(const NoiseTile& tile, F px, F py, F pz) {
  const Axis x = axis_at(px), y = axis_at(py), z = axis_at(pz);
  const int wrap = tile.edge - 1, row = tile.edge + 3;
  Slopes slopes{};
  for (int c = 0; c < 3; ++c) {
    F noise{}, along_x{}, along_y{};
    for (int b = 0; b < 3; ++b) {
      const I line = ((y.cell + b) & wrap) + tile.edge * ((z.cell + c) & wrap);
      const Quad v = gather_quads(tile.data, Indices((x.cell & wrap) + row * line));
      const F plain = x.w[0] * v.a + x.w[1] * v.b + x.w[2] * v.c;
      noise += y.w[b] * plain;
      along_y += y.slope[b] * plain;
      along_x += y.w[b] * (x.slope[0] * v.a + x.slope[1] * v.b + x.slope[2] * v.c);
    }
    slopes.x += z.w[c] * along_x;
    slopes.y += z.w[c] * along_y;
    slopes.z += z.slope[c] * noise;
  }
  return slopes;
}

NBX_FLATTEN void curl(float* const* d, const NoiseTile& noise_tile, const NoiseBands& bands,
                      const float* x, const float* y, const float* z, int n) {
  const NoiseTile tile = noise_tile;
  for (int at = 0; at < n; at += W) {
    const F px = load(x + at, Full()), py = load(y + at, Full()), pz = load(z + at, Full());
    F dx{}, dy{}, dz{};
    const auto add_band = [&](float f, float amplitude) {
      const Slopes a = slopes_at(tile, px * f, py * f, pz * f);
      const Slopes b =
          slopes_at(tile, (px + 123.456f) * f, (py + 234.567f) * f, (pz + 345.678f) * f);
      const Slopes c =
          slopes_at(tile, (px + 246.912f) * f, (py + 469.134f) * f, (pz + 691.356f) * f);
      dx += (c.y - b.z) * amplitude;
      dy += (a.z - c.x) * amplitude;
      dz += (b.x - a.y) * amplitude;
    };
    float f = bands.frequency, amplitude = bands.amplitude, left = bands.octaves;
    add_band(f, amplitude);
    for (left -= 1; left > 0; left -= 1) {
      f *= 2;
      amplitude *= left < 1 ? left * bands.gain : bands.gain;
      add_band(f, amplitude);
    }
    store(d[0] + at, dx, Full());
    store(d[1] + at, dy, Full());
    store(d[2] + at, dz, Full());
  }
}

}  // namespace

extern const DetailNoiseKernels kDetailNoiseKernels;
const DetailNoiseKernels kDetailNoiseKernels{curl};

}  // namespace nbx::NBX_ISA
