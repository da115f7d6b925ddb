#include "simulation/upres/detail_kernels.h"

#include "math/lanes/noise_lanes.h"

namespace nbx::NBX_ISA {

namespace {

void blend(float* __restrict dst, const RowsAround& rows, int n) {
  const float ty = rows.ty, tz = rows.tz;
  for (int i = 0; i < n; ++i) {
    const float near = rows.near[i] + (rows.north[i] - rows.near[i]) * ty;
    const float high = rows.high[i] + (rows.high_north[i] - rows.high[i]) * ty;
    dst[i] = near + (high - near) * tz;
  }
}

/// The values of a coarse row at some fine cells.
struct Fine {
  Indices at;
  F t;

  template <class Count>
  static Fine read(const RowPlaces& places, int i, Count n) {
    I at{};
    std::memcpy(&at, places.at + i, n * sizeof(int));
    return {Indices(at), load(places.t + i, n)};
  }
  F operator()(const float* row) const {
    const Pair p = gather_pairs(row, at);
    return p.a + (p.b - p.a) * t;
  }
};

NBX_FLATTEN void refine(float* dst, const float* row, const RowPlaces& places) {
  sweep(places.n, [&](int i, auto n) { store(dst + i, Fine::read(places, i, n)(row), n); });
}

NBX_FLATTEN void noise(float* dst, const float* const (&rows)[3], const RowPlaces& places,
                       const NoiseRows& tile, const NoiseBand* bands, int band_count) {
  sweep(places.n, [&](int i, auto n) {
    const Fine fine = Fine::read(places, i, n);
    const F x = fine(rows[0]), y = fine(rows[1]), z = fine(rows[2]);
    F sum = splat(0.0f);
    for (int b = 0; b < band_count; ++b) {
      const float f = bands[b].frequency;
      sum += bands[b].amplitude * evaluate(tile, x * f, y * f, z * f);
    }
    store(dst + i, sum, n);
  });
}

}  // namespace

extern const DetailKernels kDetailKernels;
const DetailKernels kDetailKernels{blend, refine, noise};

}  // namespace nbx::NBX_ISA
