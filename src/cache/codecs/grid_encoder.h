// Encodes grids to payloads of frame files, several in parallel.
#pragma once

#include <cstddef>
#include <vector>

#include "cache/bcf_format.h"
#include "cache/codecs/byte_buffer.h"
#include "math/field.h"

namespace nbx {

/// An encoded grid: bytes in a buffer or, for the raw codec, the field itself.
struct Payload {
  const char* data = nullptr;
  std::size_t size = 0;
};

/// Encodes a grid, using `buffer` for the result. Throws Exception for an unknown codec and for a
/// grid too large for the format; std::bad_alloc.
Payload encode_grid(ByteBuffer& buffer, Codec codec, const Field<float>& field);

/// Encodes grids on this thread and, if there is enough work, on helper threads of the same
/// priority, at most one per processor. The payloads are those of encode_grid, in the order of
/// `fields`. They are in `buffers`, which grows and keeps its memory for the next call. Throws what
/// encode_grid throws.
std::vector<Payload> encode_grids(std::vector<ByteBuffer>& buffers, Codec codec,
                                  const std::vector<const Field<float>*>& fields);

}  // namespace nbx
