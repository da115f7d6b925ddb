// Fuzzes the predictive codec. The first byte selects whether the rest are cells to encode or a
// payload; the dimensions follow, one byte each.
#include "cache/codecs/predictive_codec.h"
#include "fuzz/fuzz_input.h"

using nbx::ByteBuffer;
using nbx::Vec3i;
using nbx::fuzz::require;

namespace {

// Memory of exactly the promised size, so that any access beyond it is found.
bool decode(std::vector<float>& cells, const char* payload, std::size_t size, const Vec3i& dims) {
  std::vector<char> padded(payload, payload + size);
  padded.resize(size + nbx::kPredictivePadding);
  padded.shrink_to_fit();
  return nbx::predictive_decode(cells.data(), padded.data(), size, dims);
}

// Returns the size of the encoded cells.
std::size_t round_trip(const std::vector<float>& cells, const Vec3i& dims) {
  ByteBuffer buffer;
  const std::size_t size = nbx::predictive_encode(buffer, cells.data(), dims);
  require(nbx::predictive_fits(size, cells.size()), "a payload fits its cells");
  std::vector<float> back(cells.size());
  require(decode(back, buffer.data(), size, dims), "a payload decodes");
  require(nbx::fuzz::same_bits(back.data(), cells.data(), cells.size()), "cells come back");
  return size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  Vec3i dims{data[1] % 64, data[2] % 16, data[3] % 16};
  const auto rest = reinterpret_cast<const char*>(data + 4);
  if (data[0] % 2 == 0) {
    std::vector<float> cells = nbx::fuzz::to_floats(data + 4, size - 4);
    const std::size_t slice = static_cast<std::size_t>(dims[0]) * static_cast<std::size_t>(dims[1]);
    dims[2] = slice == 0 ? 0 : static_cast<int>(cells.size() / slice);
    cells.resize(slice * static_cast<std::size_t>(dims[2]));
    round_trip(cells, dims);
    return 0;
  }
  std::vector<float> cells(static_cast<std::size_t>(dims[0]) * static_cast<std::size_t>(dims[1]) *
                           static_cast<std::size_t>(dims[2]));
  if (!nbx::predictive_fits(size - 4, cells.size())) return 0;
  if (decode(cells, rest, size - 4, dims))
    require(round_trip(cells, dims) == size - 4, "the same cells take the same bytes");
  return 0;
}
