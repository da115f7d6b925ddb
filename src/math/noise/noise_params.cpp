#include "math/noise/noise_params.h"

#include <algorithm>
#include <cmath>

namespace nbx {

void set_noise_scale(NoiseParams& params, double size_a, double size_b, double voxel_size,
                     double strength, double period) {
  const double lo = std::max(std::min(size_a, size_b), voxel_size);
  const double hi = std::max(std::max(size_a, size_b), lo);
  const double frequency = voxel_size / hi;
  params.bands = static_cast<float>(std::log2(hi / lo) + 1);
  params.frequency = static_cast<float>(frequency);
  params.amplitude = static_cast<float>(std::max(strength, 0.0) / frequency);
  params.time_frequency = period > 0 ? static_cast<float>(1 / period) : 0;
}

}  // namespace nbx
