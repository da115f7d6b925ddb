#include "cache/codecs/predictive_codec.h"

#include "cache/codecs/predictive_kernels.h"
#include "util/isa.h"

NBX_DECLARE_ISA(PredictiveKernels, kPredictiveKernels)

namespace nbx {

std::size_t predictive_encode(ByteBuffer& dst, const float* src, const Vec3i& dims) {
  if (dims[0] == 0 || dims[1] == 0 || dims[2] == 0) return 0;
  return NBX_SELECT_ISA(kPredictiveKernels).encode(dst, src, dims);
}

bool predictive_fits(std::uint64_t size, std::uint64_t count) {
  if (count == 0) return size == 0;
  return size >= 4 && count <= size * 5676;  // 8 / 0.0014096
}

bool predictive_decode(float* dst, const char* payload, std::size_t size, const Vec3i& dims) {
  if (dims[0] == 0 || dims[1] == 0 || dims[2] == 0) return size == 0;
  if (size < 4) return false;
  return NBX_SELECT_ISA(kPredictiveKernels).decode(dst, payload, size, dims);
}

}  // namespace nbx
