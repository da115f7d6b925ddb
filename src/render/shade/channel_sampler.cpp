#include "render/shade/channel_sampler.h"

#include <algorithm>

#include "math/field_filters.h"
#include "math/field_resampling.h"
#include "render/march/grid_lookup.h"
#include "util/isa.h"

NBX_DECLARE_ISA(MarchKernels, kMarchKernels)

namespace nbx {

const MarchKernels& march_kernels() { return NBX_SELECT_ISA(kMarchKernels); }

namespace {

int smallest(const Vec3i& dims) { return std::min({dims[0], dims[1], dims[2]}); }

FieldHandle ramp_field(const Vec3i& dims, int axis) {
  FieldHandle field = acquire_field(dims);
  create_gradient_field(*field, axis, {});
  return field;
}

}  // namespace

bool ChannelSampler::bind(SimFrame& frame, int channel, Filter new_filter) {
  filter = new_filter;
  if (channel > kNoGrid)
    field = frame.grid(channel);
  else if (channel < kNoGrid && channel >= kRampZ && smallest(frame.dims()) >= 3)
    field = ramp_field(frame.dims(), kRampX - channel);
  else
    field = nullptr;
  if (field && smallest(field->dims()) < 2) field = nullptr;
  return field != nullptr;
}

void ChannelSampler::blur(double radius) {
  if (!field || !(radius > 0)) return;
  FieldHandle blurred = acquire_field();
  blurred->copy(*field);
  const FieldHandle tmp = acquire_field(field->dims());
  box_blur3D(*blurred, *tmp, radius);
  field = blurred;
}

void ChannelSampler::sample(float* out, const Points& points) const {
  if (!field || filter == Filter::kLinear) return sample_linear(out, points);
  const MarchKernels& kernels = march_kernels();
  const bool catmull_rom = filter == Filter::kCatmullRom;
  const bool fits = smallest(field->dims()) >= 4;
  const auto look = !fits ? kernels.clamped : catmull_rom ? kernels.catmull_rom : kernels.bspline;
  look(out, kernel_field(*field), points.x, points.y, points.z, points.n);
  if (catmull_rom && !fits)
    for (int i = 0; i < points.n; ++i) out[i] = std::max(out[i], 0.0f);
}

void ChannelSampler::sample_linear(float* out, const Points& points) const {
  if (!field) {
    std::fill_n(out, kBlock, 0.0f);
    return;
  }
  march_kernels().linear(out, kernel_field(*field), points.x, points.y, points.z, points.n);
}

}  // namespace nbx
