// Vectors of doubles that are loaded from floats and stored to floats, as many as a register of the
// instruction set holds. For kernels that sum in double and store floats; for kernel files only
// (util/isa.h).
#pragma once

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <cstdint>
#include <cstring>

namespace nbx::NBX_ISA {

#if defined(__AVX512F__)
inline constexpr int kLanes = 8;
#elif defined(__AVX2__)
inline constexpr int kLanes = 4;
#else
inline constexpr int kLanes = 2;
#endif

using Doubles = double __attribute__((vector_size(kLanes * sizeof(double))));
using Floats = float __attribute__((vector_size(kLanes * sizeof(float))));
using Ints = std::int32_t __attribute__((vector_size(kLanes * sizeof(std::int32_t))));

/// The floats at `p`, widened: one for D = double, kLanes for D = Doubles.
template <class D>
inline D widen(const float* p);
template <>
inline double widen<double>(const float* p) {
  return static_cast<double>(*p);
}

// Written out, because the compiler converts whole vectors in halves.
#if defined(__AVX512F__)
template <>
inline Doubles widen<Doubles>(const float* p) {
  return _mm512_maskz_cvtps_pd(0xff, _mm256_loadu_ps(p));
}
inline Floats narrow(Doubles d) { return _mm512_maskz_cvtpd_ps(0xff, d); }
#elif defined(__AVX2__)
template <>
inline Doubles widen<Doubles>(const float* p) {
  return _mm256_cvtps_pd(_mm_loadu_ps(p));
}
inline Floats narrow(Doubles d) { return _mm256_cvtpd_ps(d); }
#else
template <>
inline Doubles widen<Doubles>(const float* p) {
  Floats f;
  std::memcpy(&f, p, sizeof f);
  return __builtin_convertvector(f, Doubles);
}
inline Floats narrow(Doubles d) { return __builtin_convertvector(d, Floats); }
#endif
inline float narrow(double d) { return static_cast<float>(d); }

template <class F>
inline void store(float* p, F f) {
  std::memcpy(p, &f, sizeof f);
}

/// Calls body(D(), m) so that every m in [0, n) is covered: D = Doubles for kLanes cells from m on,
/// or D = double for one. The last vector may overlap the one before, so running the body twice on
/// a cell must give the same result.
template <class Body>
inline __attribute__((always_inline)) void over_cells(int n, Body body) {
  if (n < kLanes) {
    for (int m = 0; m < n; ++m) body(double(), m);
    return;
  }
  int m = 0;
  for (; m + kLanes <= n; m += kLanes) body(Doubles(), m);
  if (m < n) body(Doubles(), n - kLanes);
}

}  // namespace nbx::NBX_ISA
