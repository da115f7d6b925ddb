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

/// The smallest of the differences to both neighbors and across.
F smallest_difference(F before, F here, F after) {
  const F forward = after - here, central = (after - before) * 0.5f, backward = here - before;
  const F least = select(abs(central) < abs(forward), central, forward);
  return select(abs(backward) < abs(least), backward, least);
}

NBX_FLATTEN void doubt(float* doubtful, const float* const (&cells)[3], std::ptrdiff_t y,
                       std::ptrdiff_t z, float most, int n) {
  const float margin = (1 - 1 / most) * 0.999f;  // of the sums, which are rounded
  const std::ptrdiff_t steps[3] = {1, y, z};
  sweep(n, [&](int i, auto count) {
    I sure = splat(-1);
    for (int row = 0; row < 3; ++row) {
      const float* const p = cells[row] + i;
      const F here = load(p, count);
      F off = splat(0.0f);
      for (int axis = 0; axis < 3; ++axis) {
        const F slope =
            smallest_difference(load(p - steps[axis], count), here, load(p + steps[axis], count));
        off += abs(slope - (row == axis ? 1.0f : 0.0f));
      }
      sure &= off < splat(margin);
    }
    store(doubtful + i, select(sure, splat(0.0f), splat(1.0f)), count);
  });
}

}  // namespace

extern const DetailKernels kDetailKernels;
const DetailKernels kDetailKernels{blend, refine, noise, doubt};

}  // namespace nbx::NBX_ISA
