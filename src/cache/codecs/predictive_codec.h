// The predictive codec: lossless, several times slower than the run-length codec, and smaller for
// smooth fields. P. Lindstrom and M. Isenburg, "Fast and Efficient Compression of Floating-Point
// Data", IEEE Transactions on Visualization and Computer Graphics 12(5), 2006.
//
// Each cell, x fastest, is predicted from the seven cells before it (0 outside of the grid), in
// single precision and in this order:
//
//     f(-1,-1,-1) + f(-1,0,0) - f(0,-1,-1) + f(0,-1,0) - f(-1,0,-1) + f(0,0,-1) - f(-1,-1,0)
//
// The bits of prediction p and cell r are mapped to integers of the same order as the floats. They
// give one of 65 symbols, and raw bits:
//
//     r = p     32
//     r > p     33 + k, then the k low bits of r - p, where k = floor(log2(r - p))
//     r < p     31 - k, then the k low bits of p - r, where k = floor(log2(p - r))
//
// A range coder codes the symbols by their frequencies so far (range_coder.h, frequency_model.h).
// Up to 16 raw bits are coded as one number; if there are more, the low 16 come first. The stream
// ends with the coder's last 4 bytes. A grid without cells has no bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cache/codecs/byte_buffer.h"
#include "math/vector.h"

namespace nbx {

/// Bytes after a payload that predictive_decode may read; their values don't matter.
inline constexpr std::size_t kPredictivePadding = 32;

/// Encodes the cells of a grid into `dst`, from its start. Returns the number of bytes, about 6 per
/// cell for noise. Dimensions must not be negative. Throws std::bad_alloc.
std::size_t predictive_encode(ByteBuffer& dst, const float* src, const Vec3i& dims);

/// Whether a payload of `size` bytes can hold `count` cells. Every symbol keeps a frequency of at
/// least 1, so none has more than 65536 - 64 of 65536. So each cell narrows the range by at least
/// log2(65536 / 65472) = 0.00141 bits, a byte widens it by at most 8, and the range is between 2^16
/// and 2^32: there are at most (8 size - 16) / 0.00141 cells.
bool predictive_fits(std::uint64_t size, std::uint64_t count);

/// Decodes a payload. Returns false, with undefined cells, if it is visibly not one of exactly this
/// grid; a damaged payload may also decode to other values. Dimensions must not be negative. Reads
/// at most `size` + kPredictivePadding bytes.
bool predictive_decode(float* dst, const char* payload, std::size_t size, const Vec3i& dims);

}  // namespace nbx
