#include "render/march/march_kernels.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "math/lanes/bspline.h"
#include "math/lanes/lane_exp.h"
#include "math/lanes/lane_sampling.h"

namespace nbx::NBX_ISA {

namespace {

F row(const float* p, int at) { return load(p + at, Full()); }

template <class Look>
void for_rows(float* out, const float* x, const float* y, const float* z, int n, Look look) {
  for (int at = 0; at < n; at += W)
    store(out + at, look(row(x, at), row(y, at), row(z, at)), Full());
}

// As corners(), by gathers of 64 bits where the processor has them: one fetches both values of a
// row for eight lanes. At this many lanes it is faster than reads that are transposed.
Corners gather_corners(const KernelField& f, const Indices& at) {
#if defined(__AVX512F__)
  const __m512i index = _mm512_load_si512(at.at);
  const __m512i low = _mm512_cvtepu32_epi64(_mm512_castsi512_si256(index));
  const __m512i high = _mm512_cvtepu32_epi64(_mm512_extracti64x4_epi64(index, 1));
  const auto pairs = [&](const float* p) -> Pair {
    const F a = reinterpret_cast<F>(_mm512_i64gather_pd(low, p, sizeof *p));
    const F b = reinterpret_cast<F>(_mm512_i64gather_pd(high, p, sizeof *p));
    return {
        __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30),
        __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31)};
  };
  const float* up = f.data + plane_of(f);
  return {pairs(f.data), pairs(f.data + f.nx), pairs(up), pairs(up + f.nx)};
#else
  return corners(f, at);
#endif
}

// Never inlined: as part of a larger kernel it would run out of registers.
[[gnu::noinline]] NBX_FLATTEN void linear_rows(float* out, const KernelField& field, const float* x,
                                               const float* y, const float* z, int n) {
  const KernelField f = field;
  const auto within = [](F a, int cells) {
    return (a >= 0.0f) & (a <= static_cast<float>(cells - 1));
  };
  for_rows(out, x, y, z, n, [&](F px, F py, F pz) {
    const I inside = within(px, f.nx) & within(py, f.ny) & within(pz, f.nz);
    const Cell cell = linear_cell(f, px, py, pz);
    return select(inside, linear(gather_corners(f, cell.at), cell.tx, cell.ty, cell.tz), F{});
  });
}

// Branches only on whole rows: the curve of a later span replaces that of an earlier one.
F curve_at(const SplineTable& table, F v) {
  F y = splat(table.first_y);
  for (int k = 0; k < table.count; ++k) {
    const SplineSpan& span = table.spans[k];
    const F value = span.rational ? span_value<true>(span, v) : span_value<false>(span, v);
    y = select(v <= span.x, y, value);
  }
  return select(v > table.last_x, splat(table.last_y), y);
}

NBX_FLATTEN void extinction_rows(float* out, const GasChannels& gas, const float* x, const float* y,
                                 const float* z, int n) {
  constexpr int kMost = 16;
  alignas(64) float fire[kMost], smoke[kMost];
  if (gas.fire.field.data) linear_rows(fire, gas.fire.field, x, y, z, n);
  if (gas.smoke.field.data) linear_rows(smoke, gas.smoke.field, x, y, z, n);
  for (int at = 0; at < n; at += W) {
    F extinction{}, mask = splat(1.0f);
    if (gas.fire.field.data) {
      const F b = curve_at(gas.fire.curve, row(fire, at));
      extinction = gas.fire.scale * b;
      const F left = 1.0f - b * gas.mask_scale;
      mask = select(left < 0.0f, F{}, select(left > 1.0f, mask, left));
    }
    if (gas.smoke.field.data)
      extinction += gas.smoke.scale * (curve_at(gas.smoke.curve, row(smoke, at)) * mask);
    store(out + at, extinction, Full());
  }
}

NBX_FLATTEN void place_row(float* a, double origin, double direction, const double* t, int count) {
  for (int at = 0; at < count; at += 16)
    for (int i = 0; i < 16; ++i) a[at + i] = static_cast<float>(origin + t[at + i] * direction);
}

NBX_FLATTEN void depth_rows(double* depth, const GasRay& ray, double start, double step, int n) {
  constexpr int kMost = 16;
  alignas(64) double t[kMost];
  alignas(64) float x[kMost], y[kMost], z[kMost], extinction[kMost];
  for (int i = 0; i < kMost; ++i) t[i] = start + (i < n ? i : n - 1) * step;
  place_row(x, ray.origin[0], ray.direction[0], t, kMost);
  place_row(y, ray.origin[1], ray.direction[1], t, kMost);
  place_row(z, ray.origin[2], ray.direction[2], t, kMost);
  extinction_rows(extinction, ray.gas, x, y, z, n);
  for (int i = 0; i < kMost; ++i) {
    const float sigma = i < n ? extinction[i] * ray.scale : 0.0f;
    depth[i] = (sigma > 0.0f ? sigma : 0.0f) * step;
  }
}

NBX_FLATTEN void clamped_rows(float* out, const KernelField& field, const float* x, const float* y,
                              const float* z, int n) {
  const KernelField f = field;
  for_rows(out, x, y, z, n, [&](F px, F py, F pz) { return sample_linear(f, px, py, pz); });
}

// Separable over the 4 x 4 x 4 points around the cell if the grid contains them, otherwise
// trilinear.
template <class Weights>
F cubic(const KernelField& f, F x, F y, F z, Weights weights) {
  const auto fits = [](F a, int n) { return (a >= 1.0f) & (a < static_cast<float>(n - 2)); };
  const I inner = fits(x, f.nx) & fits(y, f.ny) & fits(z, f.nz);
  const F one = splat(1.0f);
  const Cell cell =
      inner_cell(f, select(inner, x, one), select(inner, y, one), select(inner, z, one));
  const Quad wx = weights(cell.tx), wy = weights(cell.ty), wz = weights(cell.tz);
  F plane[4];
  for (int k = 0; k < 4; ++k) {
    F line[4];
    for (int j = 0; j < 4; ++j)
      line[j] =
          combine(wx, gather_quads(f.data + (k - 1) * plane_of(f) + (j - 1) * f.nx - 1, cell.at));
    plane[k] = combine(wy, {line[0], line[1], line[2], line[3]});
  }
  const F value = combine(wz, {plane[0], plane[1], plane[2], plane[3]});
  return any(~inner) ? select(inner, value, sample_linear(f, x, y, z)) : value;
}

NBX_FLATTEN void catmull_rom_rows(float* out, const KernelField& field, const float* x,
                                  const float* y, const float* z, int n) {
  const KernelField f = field;
  for_rows(out, x, y, z, n,
           [&](F px, F py, F pz) { return max(cubic(f, px, py, pz, catmull_rom), F{}); });
}

NBX_FLATTEN void bspline_rows(float* out, const KernelField& field, const float* x, const float* y,
                              const float* z, int n) {
  const KernelField f = field;
  for_rows(out, x, y, z, n,
           [&](F px, F py, F pz) { return cubic(f, px, py, pz, bspline_weights<Quad, F>); });
}

// 1 - e^-q, by its series to q^5 where the subtraction would cancel digits.
NBX_FLATTEN void absorb_rows(float* loss, const float* depth, int n) {
  for (int at = 0; at < n; at += W) {
    const F q = row(depth, at);
    F series = splat(1.0f / 120);
    series = series * q - 1.0f / 24;
    series = series * q + 1.0f / 6;
    series = series * q - 0.5f;
    series = series * q + 1.0f;
    store(loss + at, select(q < 0.1f, series * q, 1.0f - exp(-q)), Full());
  }
}

NBX_FLATTEN void table_rows(float* const* out, const float* const* channels, int count,
                            const float* v, int n) {
  for (int at = 0; at < n; at += W) {
    const F place = min(max(row(v, at), F{}), splat(1.0f)) * static_cast<float>(count - 1);
    const I entry = truncate(place);
    const F t = place - to_float(entry);
    const Indices index(entry);
    for (int c = 0; c < 3; ++c) {
      const Pair pair = gather_pairs(channels[c], index);
      store(out[c] + at, pair.a + (pair.b - pair.a) * t, Full());
    }
  }
}

}  // namespace

extern const MarchKernels kMarchKernels;
const MarchKernels kMarchKernels{linear_rows,  clamped_rows,    catmull_rom_rows,
                                 bspline_rows, extinction_rows, depth_rows,
                                 place_row,    absorb_rows,     table_rows};

}  // namespace nbx::NBX_ISA
