// Reads a few neighboring floats at a different address for each lane (see lanes.h). The reads are
// 8 or 16 bytes wide and are transposed in registers. That costs about half as much as the gather
// instructions, which fetch one float at a time.
#pragma once

#include "math/lanes/lanes.h"

namespace nbx::NBX_ISA {

typedef float F4 __attribute__((vector_size(16)));
typedef double D2 __attribute__((vector_size(16)));

/// One element index per lane, unsigned, so that a field may have up to 2^32 elements.
struct alignas(64) Indices {
  explicit Indices(I index) { std::memcpy(at, &index, sizeof index); }
  std::uint32_t at[W];
};

/// F number n holds neighbor n of every lane.
struct Pair {
  F a, b;
};
struct Quad {
  F a, b, c, d;
};

/// Groups of four lanes, one after the other.
inline F join(const F4* group) {
#if defined(__AVX512F__)
  const auto lo = __builtin_shufflevector(group[0], group[1], 0, 1, 2, 3, 4, 5, 6, 7);
  const auto hi = __builtin_shufflevector(group[2], group[3], 0, 1, 2, 3, 4, 5, 6, 7);
  return __builtin_shufflevector(lo, hi, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
#elif defined(__AVX2__)
  return __builtin_shufflevector(group[0], group[1], 0, 1, 2, 3, 4, 5, 6, 7);
#else
  return group[0];
#endif
}

/// In each group of four lanes: elements n0 .. n3 out of x (0 to 3) and y (4 to 7).
template <int n0, int n1, int n2, int n3>
F pick(F x, F y) {
  constexpr auto at = [](int lane) {
    constexpr int n[4] = {n0, n1, n2, n3};
    const int group = lane / 4 * 4;
    return n[lane % 4] < 4 ? group + n[lane % 4] : W + group + n[lane % 4] - 4;
  };
#if defined(__AVX512F__)
  return __builtin_shufflevector(x, y, at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7),
                                 at(8), at(9), at(10), at(11), at(12), at(13), at(14), at(15));
#elif defined(__AVX2__)
  return __builtin_shufflevector(x, y, at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7));
#else
  return __builtin_shufflevector(x, y, at(0), at(1), at(2), at(3));
#endif
}

/// p[index] and p[index + 1].
inline Pair gather_pairs(const float* p, const Indices& index) {
  F4 even[W / 4], odd[W / 4];
  const auto two = [&](int lane) {
    D2 both{};
    for (int l = 0; l < 2; ++l) {
      double pair;
      std::memcpy(&pair, p + index.at[lane + l], sizeof pair);
      both[l] = pair;
    }
    return reinterpret_cast<F4>(both);
  };
  for (int g = 0; g < W / 4; ++g) {
    even[g] = two(4 * g);
    odd[g] = two(4 * g + 2);
  }
  const F x = join(even), y = join(odd);
  return {pick<0, 2, 4, 6>(x, y), pick<1, 3, 5, 7>(x, y)};
}

/// p[index] to p[index + 3].
inline Quad gather_quads(const float* p, const Indices& index) {
  F row[4];
  for (int r = 0; r < 4; ++r) {
    F4 group[W / 4];
    for (int g = 0; g < W / 4; ++g) std::memcpy(&group[g], p + index.at[4 * g + r], sizeof(F4));
    row[r] = join(group);
  }
  // Transposes each block of 4 x 4.
  const F ab01 = pick<0, 4, 1, 5>(row[0], row[1]), cd01 = pick<2, 6, 3, 7>(row[0], row[1]);
  const F ab23 = pick<0, 4, 1, 5>(row[2], row[3]), cd23 = pick<2, 6, 3, 7>(row[2], row[3]);
  return {pick<0, 1, 4, 5>(ab01, ab23), pick<2, 3, 6, 7>(ab01, ab23), pick<0, 1, 4, 5>(cd01, cd23),
          pick<2, 3, 6, 7>(cd01, cd23)};
}

}  // namespace nbx::NBX_ISA
