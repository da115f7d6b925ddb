// The two loops of the predictive codec, compiled once per instruction set (util/isa.h).
// predictive_codec.h has their contracts.
#pragma once

#include <cstddef>

#include "cache/codecs/byte_buffer.h"
#include "math/vector.h"

namespace nbx {

struct PredictiveKernels {
  std::size_t (*encode)(ByteBuffer& dst, const float* src, const Vec3i& dims);
  bool (*decode)(float* dst, const char* payload, std::size_t size, const Vec3i& dims);
};

}  // namespace nbx
