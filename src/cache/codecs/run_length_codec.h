// The run-length codec: lossless, and close to the speed of memory on zeros, which fill most of a
// smoke field.
//
// A payload is a sequence of blocks. Each begins with a signed 32-bit count c, little-endian:
//
//     c > 0    c floats follow, to be copied
//     c < 0    one float follows, to be repeated -c times
//     c = 0    nothing
#pragma once

#include <cstddef>
#include <cstdint>

namespace nbx {

/// The largest number of bytes that rle_encode writes for `count` cells.
constexpr std::size_t rle_bound(std::size_t count) { return 4 * count + 4; }

/// Encodes `count` cells, at most 2^31 - 1, into `dst`, which has room for rle_bound(count) bytes.
/// Returns the number of bytes. Runs of three cells and more become run blocks, and so does a run
/// of two at the very end; everything else is copied. A run stores the bits of its first cell: -0
/// joins a run of +0 and is decoded as +0. NaNs join no run and keep their bits.
std::size_t rle_encode(char* dst, const float* src, std::size_t count);

/// Whether the payload consists of complete blocks that add up to exactly `count` cells. Reads only
/// the counts.
bool rle_fits(const char* payload, std::size_t size, std::uint64_t count);

/// Decodes a payload for which rle_fits(payload, size, cells of dst).
void rle_decode(float* dst, const char* payload, std::size_t size);

}  // namespace nbx
