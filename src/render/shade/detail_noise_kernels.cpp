#include "render/shade/detail_noise_kernels.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "math/lanes/lane_gather.h"

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

struct Cells {
  Axis x, y, z;
};

// Three coefficients of a row along x.
struct Coefficients {
  F a, b, c;
};

struct Slopes {
  F x, y, z;
};

// The noise's slopes along all axes. row(b, c) returns the coefficients of the rows around the
// cells. The compiler removes those that the caller doesn't use.
template <class Row>
Slopes sum_slopes(const Cells& at, Row row) {
  const auto& [x, y, z] = at;
  Slopes slopes{};
#pragma GCC unroll 3
  for (int c = 0; c < 3; ++c) {
    F noise{}, along_x{}, along_y{};
#pragma GCC unroll 3
    for (int b = 0; b < 3; ++b) {
      const Coefficients v = row(b, c);
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

// The first elements of the nine rows of coefficients around each lane's cell.
struct alignas(64) Rows {
  std::uint32_t at[3][3][W];  // at[c][b], along z and y
  I lanes(int b, int c) const {
    I all;
    std::memcpy(&all, at[c][b], sizeof all);
    return all;
  }
};

Rows rows_of(const NoiseTile& tile, const Cells& at) {
  const int wrap = tile.edge - 1, row = tile.edge + 3, plane = row * tile.edge;
  const I x = at.x.cell & wrap;
  I y[3], z[3];
  for (int n = 0; n < 3; ++n) {
    y[n] = x + row * ((at.y.cell + n) & wrap);
    z[n] = plane * ((at.z.cell + n) & wrap);
  }
  Rows rows;
  for (int c = 0; c < 3; ++c)
    for (int b = 0; b < 3; ++b) {
      const I first = y[b] + z[c];
      std::memcpy(rows.at[c][b], &first, sizeof first);
    }
  return rows;
}

// Each lane's left neighbor; the first lane keeps its own value.
I neighbor(I a) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(a, a, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14);
#elif defined(__AVX2__)
  return __builtin_shufflevector(a, a, 0, 0, 1, 2, 3, 4, 5, 6);
#else
  return __builtin_shufflevector(a, a, 0, 0, 1, 2);
#endif
}

// One bit per lane of a mask.
unsigned bits_of(I mask) {
#if defined(__AVX512F__)
  return _mm512_cmpneq_epi32_mask(reinterpret_cast<__m512i>(mask), _mm512_setzero_si512());
#elif defined(__AVX2__)
  return _mm256_movemask_ps(reinterpret_cast<__m256>(mask));
#else
  return _mm_movemask_ps(reinterpret_cast<__m128>(mask));
#endif
}

// Points that follow one another along a ray often share a noise cell. A run is a stretch of lanes
// in the same cell: its coefficients are read once. With more runs than kMostRuns, it is faster to
// read those of each lane.
constexpr int kMostRuns = W > 4 ? 4 : 2;

Slopes slopes_at(const NoiseTile& tile, F px, F py, F pz) {
  const Cells at{axis_at(px), axis_at(py), axis_at(pz)};
  const Rows rows = rows_of(tile, at);
  unsigned starts = bits_of(rows.lanes(0, 0) != neighbor(rows.lanes(0, 0)));
  int first_lane[kMostRuns]{}, runs = 1;
  for (; starts != 0 && runs < kMostRuns; starts &= starts - 1)
    first_lane[runs++] = __builtin_ctz(starts);
  if (starts != 0)
    return sum_slopes(at, [&](int b, int c) {
      const Quad v = gather_quads(tile.data, Indices(rows.lanes(b, c)));
      return Coefficients{v.a, v.b, v.c};
    });

  // The same float in all lanes. The compiler drops this subtraction, but not an addition of 0.
  const auto broadcast = [](const float* p) { return *p - F{}; };
  const I lane = truncate(iota());
  return sum_slopes(at, [&](int b, int c) {
    const std::uint32_t* row = rows.at[c][b];
    const float* p = tile.data + row[0];
    Coefficients v{broadcast(p), broadcast(p + 1), broadcast(p + 2)};
    for (int run = 1; run < runs; ++run) {
      const I later = lane >= first_lane[run];
      p = tile.data + row[first_lane[run]];
      v = {select(later, broadcast(p), v.a), select(later, broadcast(p + 1), v.b),
           select(later, broadcast(p + 2), v.c)};
    }
    return v;
  });
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
    float f = bands.frequency, amplitude = bands.amplitude;
    for (float left = bands.octaves;;) {
      add_band(f, amplitude);
      left -= 1;
      if (!(left > 0)) break;
      f *= 2;
      amplitude *= left < 1 ? left * bands.gain : bands.gain;
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
