// The predictor of the predictive codec (the Lorenzo predictor): the value of a cell if the field
// were a sum of functions of two coordinates each.
//
// For kernel files only (util/isa.h).
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "math/vector.h"

namespace nbx::NBX_ISA {

// The seven cells before a cell, named by the axes along which they lie one cell back.
struct Neighbors {
  float x = 0, y = 0, z = 0, xy = 0, xz = 0, yz = 0, xyz = 0;
};

inline float predict(const Neighbors& n) { return n.xyz + n.x - n.yz + n.y - n.xz + n.z - n.xy; }

inline bool is_nan(float f) { return f != f; }

// One step of the sum with the NaNs of x86: the first NaN wins and becomes quiet, and inf - inf
// gives a NaN with the sign bit. The bits of a prediction must not depend on the compiler, which
// may swap the operands of a sum, or on the processor, whose NaNs may differ.
inline float nan_step(float sum, float term, float result) {
  constexpr std::uint32_t kQuiet = 0x00400000;
  if (is_nan(sum)) return std::bit_cast<float>(std::bit_cast<std::uint32_t>(sum) | kQuiet);
  if (is_nan(term)) return std::bit_cast<float>(std::bit_cast<std::uint32_t>(term) | kQuiet);
  return is_nan(result) ? std::bit_cast<float>(0xffc00000u) : result;
}

// `predict` for the case that its result is a NaN.
inline __attribute__((noinline)) float predict_nan(const Neighbors& n) {
  float p = nan_step(n.xyz, n.x, n.xyz + n.x);
  p = nan_step(p, n.yz, p - n.yz);
  p = nan_step(p, n.y, p + n.y);
  p = nan_step(p, n.xz, p - n.xz);
  p = nan_step(p, n.z, p + n.z);
  return nan_step(p, n.xy, p - n.xy);
}

// Maps the bits of a float to an integer of the same order, and back.
inline std::uint32_t to_ordered(float f) {
  const auto bits = std::bit_cast<std::uint32_t>(f);
  return bits ^ (static_cast<std::uint32_t>(static_cast<std::int32_t>(bits) >> 31) | 0x80000000u);
}
inline float from_ordered(std::uint32_t r) {
  return std::bit_cast<float>(
      r ^ (~static_cast<std::uint32_t>(static_cast<std::int32_t>(r) >> 31) | 0x80000000u));
}

constexpr int kChunk = 1024;  // cells that the loops process at once

// Part of a row, with the same parts of the rows before it along y, z and both. `before` holds the
// neighbors of the first cell in these rows: x, xy, xz, xyz.
template <class Cell>
struct Chunk {
  Cell* cells;
  const float* y;
  const float* z;
  const float* yz;
  Neighbors before;
};

// Calls visit(chunk, cells) for the whole grid in order, until it returns false.
template <class Cell, class Visit>
bool for_each_chunk(Cell* grid, const Vec3i& dims, Visit visit) {
  static constexpr float kZeros[kChunk] = {};
  const std::ptrdiff_t nx = dims[0], ny = dims[1], nz = dims[2], slice = nx * ny;
  for (std::ptrdiff_t k = 0; k < nz; ++k)
    for (std::ptrdiff_t j = 0; j < ny; ++j)
      for (std::ptrdiff_t i = 0; i < nx; i += kChunk) {
        Cell* const cells = grid + i + nx * j + slice * k;
        const bool has_y = j > 0, has_z = k > 0, has_yz = has_y && has_z;
        Chunk<Cell> chunk{cells,
                          has_y ? cells - nx : kZeros,
                          has_z ? cells - slice : kZeros,
                          has_yz ? cells - nx - slice : kZeros,
                          {}};
        if (i > 0) {
          chunk.before.x = cells[-1];
          if (has_y) chunk.before.xy = chunk.y[-1];
          if (has_z) chunk.before.xz = chunk.z[-1];
          if (has_yz) chunk.before.xyz = chunk.yz[-1];
        }
        const std::ptrdiff_t rest = nx - i;
        if (!visit(chunk, static_cast<int>(rest < kChunk ? rest : kChunk))) return false;
      }
  return true;
}

}  // namespace nbx::NBX_ISA
