// Products that are fast where operands or results are subnormal. Many processors take a hundred
// times as long for those; the edges of smoke and fire are full of them.
#pragma once

#include "math/lanes/lane_sampling.h"

namespace nbx::NBX_ISA {

/// a * b by integers and doubles. With A = |a| 2^149 and B = |b| 2^149, which doubles hold exactly,
///
///     P = A B 2^-149 = |a b| 2^149
///
/// is exact too. Below 2^24 the bits of the float nearest to |a b| are P rounded to an integer.
inline F exact_tiny_product(F a, F b) {
  std::uint32_t x[W], y[W], bits[W], tiny[W];
  std::memcpy(x, &a, sizeof a);
  std::memcpy(y, &b, sizeof b);
  const auto magnified = [](std::uint32_t m) {  // the double of 2^149 times the float
    const std::uint64_t normal = (static_cast<std::uint64_t>(m) << 29) + ((1023ull + 22) << 52);
    double wide;
    std::memcpy(&wide, &normal, sizeof wide);
    return m < 0x800000u ? static_cast<double>(static_cast<std::int32_t>(m)) : wide;
  };
  for (int l = 0; l < W; ++l) {
    const std::uint32_t ma = x[l] & 0x7fffffffu, mb = y[l] & 0x7fffffffu;
    const double P = magnified(ma) * magnified(mb) * 0x1p-149;
    const double rounded = P + 0x1p52;  // to the nearest integer, in the low bits
    std::uint64_t integer;
    std::memcpy(&integer, &rounded, sizeof integer);
    const bool finite = ma < 0x7f800000u && mb < 0x7f800000u;
    tiny[l] = P < 0x1p24 && finite ? ~0u : 0u;
    bits[l] = ((x[l] ^ y[l]) & 0x80000000u) | static_cast<std::uint32_t>(integer);
  }
  I is_tiny;
  F value;
  std::memcpy(&is_tiny, tiny, sizeof is_tiny);
  std::memcpy(&value, bits, sizeof value);
  const F one = splat(1.0f);
  return select(is_tiny, value, select(is_tiny, one, a) * select(is_tiny, one, b));
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

/// The lanes where a factor or the product may be subnormal.
inline I needs_care(F a, F b) {
  const auto magnitude = [](F f) { return reinterpret_cast<I>(f) & splat(0x7fffffff); };
  const I ma = magnitude(a), mb = magnitude(b);
  // The exponents of normal factors add up to at least 128 if the product is normal. The constants
  // that numbers are multiplied with have exponents up to 128.
  return ((ma >> 23) + (mb >> 23) < 129) & (ma != 0) & (mb != 0);
}

// Out of line: they are rare even among tiny values.
[[gnu::noinline]] inline F careful_product(F a, F b) { return exact_tiny_product(a, b); }
[[gnu::noinline]] inline F careful_combine(const Quad& w, F a, F b, F c, F d) {
  return ((exact_tiny_product(w.a, a) + exact_tiny_product(w.b, b)) + exact_tiny_product(w.c, c)) +
         exact_tiny_product(w.d, d);
}

inline Careful operator*(F a, Careful b) {
  return {any(needs_care(a, b.v)) ? careful_product(a, b.v) : a * b.v};
}
inline Careful operator*(float a, Careful b) { return splat(a) * b; }

/// One test and one call for four products.
inline Careful combine(const Quad& w, Careful a, Careful b, Careful c, Careful d) {
  const I care =
      needs_care(w.a, a.v) | needs_care(w.b, b.v) | needs_care(w.c, c.v) | needs_care(w.d, d.v);
  return {any(care) ? careful_combine(w, a.v, b.v, c.v, d.v) : combine(w, a.v, b.v, c.v, d.v)};
}

}  // namespace nbx::NBX_ISA
