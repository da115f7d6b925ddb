// Helpers of the fuzz targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace nbx::fuzz {

/// Ends the process if a property doesn't hold; the fuzzer reports that.
inline void require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", property);
  std::abort();
}

/// The complete floats in some bytes.
inline std::vector<float> to_floats(const std::uint8_t* data, std::size_t size) {
  std::vector<float> floats(size / sizeof(float));
  if (!floats.empty()) std::memcpy(floats.data(), data, floats.size() * sizeof(float));
  return floats;
}

inline bool same_bits(const float* a, const float* b, std::size_t count) {
  return count == 0 || std::memcmp(a, b, count * sizeof(float)) == 0;
}

}  // namespace nbx::fuzz
