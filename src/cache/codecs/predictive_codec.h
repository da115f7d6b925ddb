// The predictive codec: lossless, some times slower than the run-length one, and smaller on what is
// smooth. P. Lindstrom and M. Isenburg, "Fast and Efficient Compression of Floating-Point Data",
// IEEE Transactions on Visualization and Computer Graphics 12(5), 2006.
//
// Each cell, x fastest, is predicted from the seven cells before it (those outside of the grid are
// 0), in single precision and in this order:
//
//     f(-1,-1,-1) + f(-1,0,0) - f(0,-1,-1) + f(0,-1,0) - f(-1,0,-1) + f(0,0,-1) - f(-1,-1,0)
//
// Prediction p and cell r, their bits mapped to integers of the same order as the floats, give one
// symbol of 65, and raw bits:
//
//     r = p     32
//     r > p     33 + k, then the k low bits of r - p, where k = floor(log2(r - p))
//     r < p     31 - k, then the k low bits of p - r, likewise
//
// Symbols go through a range coder by their frequencies so far (range_coder.h, frequency_model.h),
// 16 raw bits and fewer as one number, of more the low 16 first. The stream ends with the coder's
// last 4 bytes. A grid without cells has no bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cache/codecs/byte_buffer.h"
#include "math/vector.h"

namespace nbx {

/// Bytes behind a payload that predictive_decode may read; their values don't matter.
inline constexpr std::size_t kPredictivePadding = 32;

/// Encodes the cells of a grid into `dst`, from its start. Returns the bytes written; up to some 6
/// a cell on noise. No dimension is negative. Throws std::bad_alloc.
std::size_t predictive_encode(ByteBuffer& dst, const float* src, const Vec3i& dims);

/// True if a payload of `size` bytes can hold `count` cells at all. Every symbol keeps a frequency
/// of at least 1, so none has more than 65536 - 64 of 65536. Each cell thus narrows the range by at
/// least log2(65536 / 65472) = 0.00141 bits, a byte widens it by 8 at most, and the range lies
/// between 2^16 and 2^32: no more than (8 size - 16) / 0.00141 cells.
bool predictive_fits(std::uint64_t size, std::uint64_t count);

/// Decodes a payload. False, and cells are undefined, if it isn't one of exactly this grid, as far
/// as that shows: a damaged one may decode to other values. No dimension is negative. Reads `size`
/// + kPredictivePadding bytes at most.
bool predictive_decode(float* dst, const char* payload, std::size_t size, const Vec3i& dims);

}  // namespace nbx
