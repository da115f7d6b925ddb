// The format of frame files: a magic, a version byte, and grid records to the end of the file.
// Everything is little-endian and packed.
//
//     file    "kelvra bcf\0" | version byte | record ...
//     record  head, 222 bytes | payload, dataSize bytes | dataSize again, u32
//
//     head    offset  size  type     field
//                  0     4  u32      dataSize    payload length in bytes
//                  4     1  u8       gridType    1 .. 35
//                  5     1  u8       codec       0 raw, 1 run-length, 2 predictive
//                  6    32  4 x f64  simTime     time num, den, frame length num, den
//                 38    32  4 x f64  frameTime
//                 70    12  3 x i32  offset      domain cell of grid index (0, 0, 0)
//                 82    12  3 x i32  dims        cells
//                 94   128  16 x f64 gridMatrix  world to domain cells, row vectors, row by row
//
// The low 7 bits of the version byte are the version, the top bit is reserved. A writer sets the
// version last, so a file of version 0 is unfinished. The order of records has no meaning; if a
// type occurs twice, the later record wins. A raw payload is the plain floats; run_length_codec.h
// and predictive_codec.h show the others. A grid without cells has no payload.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "cache/frame_time.h"
#include "math/vector.h"

namespace nbx {

enum class Codec : std::uint8_t { kRaw = 0, kRunLength = 1, kPredictive = 2 };

/// 4 x 4 for row vectors, row by row: p times the matrix maps a point in right-handed world
/// coordinates to domain cells.
using GridMatrix = std::array<double, 16>;

/// The head of a record. `codec` is the byte of the file, which may be an unknown codec.
struct GridHead {
  std::uint32_t dataSize = 0;
  std::uint8_t gridType = 0;
  std::uint8_t codec = 0;
  FrameTime simTime, frameTime;
  Vec3i offset, dims;
  GridMatrix gridMatrix{};
};

inline constexpr std::size_t kBcfHeaderSize = 12;
inline constexpr std::size_t kBcfHeadSize = 222;
inline constexpr std::size_t kBcfTrailerSize = 4;
/// The first bytes of a file of the only version, 6.
inline constexpr std::array<char, kBcfHeaderSize> kBcfHeader{'k', 'e', 'l', 'v', 'r', 'a',
                                                             ' ', 'b', 'c', 'f', 0,   6};
/// The position of the version byte.
inline constexpr std::size_t kBcfVersionAt = kBcfHeaderSize - 1;
/// Cells of the largest grid that can be written or read.
inline constexpr std::uint64_t kBcfMaxCells = 0x7fffffff;

/// Convert a head to its bytes and back. Any bytes are a head.
void encode_head(char* dst, const GridHead& head);
void decode_head(GridHead& head, const char* src);

/// Cells of a grid, where a negative dimension counts as 0. Empty if above kBcfMaxCells.
std::optional<std::uint64_t> cell_count(const Vec3i& dims);

}  // namespace nbx
