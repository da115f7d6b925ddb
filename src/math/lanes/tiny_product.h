// Products that are fast where operands or results are subnormal. Many processors take a hundred
// times as long for those; the edges of smoke and fire are full of them.
#pragma once

#include "math/lanes/lane_sampling.h"

namespace nbx::NBX_ISA {

/// a * b by way of doubles. They hold the product of two floats exactly, and without subnormal
/// numbers, so it is rounded once, as the product of floats is. Conversions are always fast.
inline F product_by_doubles(F a, F b) {
#if defined(__AVX512F__)
  using Half = __m256;
  const auto low = [](F f) { return _mm512_castps512_ps256(f); };
  const auto high = [](F f) {
    return _mm256_castpd_ps(_mm512_maskz_extractf64x4_pd(0xf, _mm512_castps_pd(f), 1));
  };
  const auto times = [](Half x, Half y) {
    const __m512d p = _mm512_maskz_cvtps_pd(0xff, x) * _mm512_maskz_cvtps_pd(0xff, y);
    return _mm256_castps_pd(_mm512_maskz_cvtpd_ps(0xff, p));
  };
  const __m512d first = _mm512_castpd256_pd512(times(low(a), low(b)));
  return _mm512_castpd_ps(_mm512_insertf64x4(first, times(high(a), high(b)), 1));
#elif defined(__AVX2__)
  using Half = __m128;
  const auto low = [](F f) { return _mm256_castps256_ps128(f); };
  const auto high = [](F f) { return _mm256_extractf128_ps(f, 1); };
  const auto times = [](Half x, Half y) {
    return _mm256_cvtpd_ps(_mm256_cvtps_pd(x) * _mm256_cvtps_pd(y));
  };
  return _mm256_set_m128(times(high(a), high(b)), times(low(a), low(b)));
#elif defined(__SSE2__)
  const auto times = [](F x, F y) { return _mm_cvtpd_ps(_mm_cvtps_pd(x) * _mm_cvtps_pd(y)); };
  return _mm_movelh_ps(times(a, b), times(_mm_movehl_ps(a, a), _mm_movehl_ps(b, b)));
#else
  F product;
  for (int l = 0; l < W; ++l)
    product[l] = static_cast<float>(static_cast<double>(a[l]) * static_cast<double>(b[l]));
  return product;
#endif
}

/// Floats whose products take this care. Same bits as F.
struct Careful {
  F v;
};
inline F plain(Careful a) { return a.v; }
inline F plain(F a) { return a; }

inline Careful select(I mask, Careful a, Careful b) { return {select(mask, a.v, b.v)}; }
inline Careful operator+(Careful a, Careful b) { return {a.v + b.v}; }
inline Careful operator-(Careful a, Careful b) { return {a.v - b.v}; }
inline Careful operator*(F a, Careful b) { return {product_by_doubles(a, b.v)}; }
inline Careful operator*(float a, Careful b) { return splat(a) * b; }

}  // namespace nbx::NBX_ISA
