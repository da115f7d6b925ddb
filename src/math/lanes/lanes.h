// Lanes: W floats side by side that are processed at once, 16, 8 or 4 with AVX-512, AVX2 or the
// baseline. For kernel files only (util/isa.h): everything is in the namespace of the instruction
// set and does the same arithmetic in each, so results have the same bits.
//
// The types are vectors of the compiler: + - * and comparisons work lane by lane. A comparison
// gives a mask with all bits or none for each lane; combine masks with & and |.
#pragma once

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// Put before a kernel: inlines everything that it calls, so that lanes stay in registers. Off in
// builds with the address sanitizer, where kernels would take minutes to compile.
#ifdef __SANITIZE_ADDRESS__
#define NBX_FLATTEN
#else
#define NBX_FLATTEN [[gnu::flatten]]
#endif

namespace nbx::NBX_ISA {

#if defined(__AVX512F__)
inline constexpr int W = 16;
#elif defined(__AVX2__)
inline constexpr int W = 8;
#else
inline constexpr int W = 4;
#endif

typedef float F __attribute__((vector_size(4 * W)));
typedef std::int32_t I __attribute__((vector_size(4 * W)));

inline F splat(float a) { return F{} + a; }
inline I splat(int a) { return I{} + a; }

/// 0, 1, 2 ...
inline F iota() {
  F lane{};
  for (int l = 0; l < W; ++l) lane[l] = static_cast<float>(l);
  return lane;
}

inline I int_iota() {
  I lane{};
  for (int l = 0; l < W; ++l) lane[l] = l;
  return lane;
}

inline F select(I mask, F a, F b) { return mask ? a : b; }
/// With NaN on either side the result is b.
inline F min(F a, F b) { return a < b ? a : b; }
inline F max(F a, F b) { return a > b ? a : b; }
inline I min(I a, I b) { return a < b ? a : b; }
inline I max(I a, I b) { return a < b ? b : a; }
/// To [0, most]; NaN gives 0.
inline F clamp(F a, int most) { return min(max(a, splat(0.0f)), splat(static_cast<float>(most))); }
inline F abs(F a) { return reinterpret_cast<F>(reinterpret_cast<I>(a) & splat(0x7fffffff)); }

/// The integer part; `a` must be representable.
inline I truncate(F a) { return __builtin_convertvector(a, I); }
inline F to_float(I a) { return __builtin_convertvector(a, F); }

/// Whether any lane of a mask is set.
inline bool any(I mask) {
#if defined(__AVX512DQ__)
  return _mm512_movepi32_mask(reinterpret_cast<__m512i>(mask)) != 0;
#elif defined(__AVX2__)
  return _mm256_movemask_ps(reinterpret_cast<__m256>(mask)) != 0;
#elif defined(__SSE2__)
  return _mm_movemask_ps(reinterpret_cast<__m128>(mask)) != 0;
#else
  std::uint64_t halves[W / 2], all = 0;
  std::memcpy(halves, &mask, sizeof mask);
  for (std::uint64_t half : halves) all |= half;
  return all != 0;
#endif
}

/// The smallest and the largest of all lanes.
inline int lowest(I a) {
#if defined(__AVX512F__)
  return _mm512_reduce_min_epi32(reinterpret_cast<__m512i>(a));
#else
  int least = a[0];
  for (int l = 1; l < W; ++l) least = a[l] < least ? a[l] : least;
  return least;
#endif
}
inline int highest(I a) { return -lowest(-a); }

/// The count of a whole row of lanes, known when compiling.
using Full = std::integral_constant<int, W>;

/// n <= W floats from memory; the other lanes are 0.
template <class Count>
F load(const float* p, Count n) {
  F a{};
  std::memcpy(&a, p, n * sizeof(float));
  return a;
}

template <class Count>
void store(float* p, F a, Count n) {
  std::memcpy(p, &a, n * sizeof(float));
}

// Out of line: it is rare, and kernels would otherwise contain their loop twice.
template <class Body>
[[gnu::noinline]] void short_run(int n, const Body& body) {
  body(0, n);
}

/// Runs body(first, count) over cells 0 .. n-1. The last row of lanes isn't shortened but overlaps
/// the one before, so a body must not read what it writes. Only a run shorter than W has a count
/// below W.
template <class Body>
void sweep(int n, const Body& body) {
  if (n >= W)
    for (int i = 0; i < n; i += W) body(i + W <= n ? i : n - W, Full());
  else if (n > 0)
    short_run(n, body);
}

}  // namespace nbx::NBX_ISA
