#include "math/field_filters.h"

#include <algorithm>
#include <cstdlib>

#include "math/field_checks.h"
#include "math/filters/box_filter.h"
#include "math/filters/separable_filter.h"
#include "util/log.h"

namespace nbx {

namespace {

// Lines are padded with zeros, which replace the positions that a window lacks.
class Convolution {
 public:
  Convolution(const float* weights, int reach) : weights_(weights), reach_(reach) {}

  std::size_t scratch(int length, int width) const {
    return std::size_t{1} * (length + 2 * reach_) * width;
  }

  void operator()(const Bundle& lines, float* scratch) const {
    const std::ptrdiff_t w = lines.width, pad = reach_ * w, floats = lines.length * w;
    float* x = scratch + pad;
    std::fill_n(scratch, pad, 0.0f);
    lines.pack(x);
    std::fill_n(x + floats, pad, 0.0f);
    lines.for_each_run(0, lines.length, [&](float* dst, std::ptrdiff_t at, std::ptrdiff_t count) {
      constexpr int kGroup = 16;
      std::ptrdiff_t i = 0;
      for (; i + kGroup <= count; i += kGroup) group<kGroup>(dst + i, x + at + i, w);
      for (; i < count; ++i) group<1>(dst + i, x + at + i, w);
    });
  }

 private:
  // dst = sum over d of weight[|d|] x[p + d], d ascending, for N neighboring floats.
  template <int N>
  void group(float* dst, const float* x, std::ptrdiff_t w) const {
    float sum[N] = {};
    for (int d = -reach_; d <= reach_; ++d) {
      const float weight = weights_[std::abs(d)];
      const float* from = x + d * w;
      for (int l = 0; l < N; ++l) sum[l] += weight * from[l];
    }
    std::copy_n(sum, N, dst);
  }

  const float* weights_;
  int reach_;
};

}  // namespace

void box_blur3D(Field<float>& field, Field<float>& tmp, double radius) {
  check_dims(field, tmp);
  if (!(radius > 0)) {
    LogMessage() << "box_blur3D: radius <= 0.";
    return;
  }
  filter_separable(field, tmp, BoxFilter(box_kernel(radius)));
}

void convolve3D(const Field<float>& filter, Field<float>& field, Field<float>& tmp) {
  check_dims(field, tmp);
  if (filter.count() < 2) {
    LogMessage() << "convole3d: filter width < 2";
    return;
  }
  filter_separable(field, tmp, Convolution(filter.data(), filter.nx() - 1));
}

}  // namespace nbx
