// Fuzzes the run-length codec. The first byte selects whether the rest are cells to encode or a
// payload; in a payload the next two bytes give its number of cells.
#include "cache/codecs/run_length_codec.h"
#include "fuzz/fuzz_input.h"

using nbx::fuzz::require;

namespace {

// A run has the bits of its first cell, so zeros may change their sign; all other bits come back.
bool same_cells(const std::vector<float>& a, const std::vector<float>& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (!(a[i] == 0 && b[i] == 0) && !nbx::fuzz::same_bits(&a[i], &b[i], 1)) return false;
  return a.size() == b.size();
}

std::vector<char> encode(const std::vector<float>& cells) {
  std::vector<char> payload(nbx::rle_bound(cells.size()));
  payload.resize(nbx::rle_encode(payload.data(), cells.data(), cells.size()));
  payload.shrink_to_fit();
  return payload;
}

std::vector<float> decode(const std::vector<char>& payload, std::size_t count) {
  std::vector<float> cells(count);
  nbx::rle_decode(cells.data(), payload.data(), payload.size());
  return cells;
}

void round_trip(const std::vector<float>& cells) {
  const std::vector<char> payload = encode(cells);
  require(nbx::rle_fits(payload.data(), payload.size(), cells.size()), "a payload fits its cells");
  require(same_cells(decode(payload, cells.size()), cells), "cells come back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  if (data[0] % 2 == 0) {
    round_trip(nbx::fuzz::to_floats(data + 1, size - 1));
    return 0;
  }
  const std::size_t count = data[1] + 256u * data[2];
  const std::vector<char> payload(data + 3, data + size);
  if (nbx::rle_fits(payload.data(), payload.size(), count)) round_trip(decode(payload, count));
  return 0;
}
