#include "simulation/fluid/diffusion_filter.h"

#include <cmath>
#include <vector>

namespace nbx {

namespace {

constexpr double kSmallestWeight = 0.0001;

// The solution of the heat equation after dt from a voxel of heat 1 is, integrated over the voxel
// at distance i,
//
//     w(i) = e(i) - e(i-1),  e(i) = erf(x(i)) / 2,  x(i) = (i + 1/2) dx / (2 sqrt(diffusion dt))
//
// and w(0) = 2 e(0). The tail beyond the last entry goes into that entry.
std::vector<double> heat_weights(double dx, double dt, double diffusion, int longest) {
  const auto e = [&](int i) {
    return 0.5 * std::erf((i + 0.5) * dx / (2 * std::sqrt(diffusion * dt)));
  };
  std::vector<double> w{2 * e(0)};
  for (int i = 1; i < std::max(longest, 3); ++i) {
    w.push_back(e(i) - e(i - 1));
    if (i >= 2 && !(w.back() > kSmallestWeight)) break;
  }
  w.back() = 0.5 - e(static_cast<int>(w.size()) - 2);
  return w;
}

}  // namespace

const Field<float>& DiffusionFilter::kernel(double dx, double dt, double diffusion, int longest) {
  if (dx == dx_ && dt == dt_ && diffusion == diffusion_ && longest == longest_) return kernel_;
  const std::vector<double> weights = heat_weights(dx, dt, diffusion, longest);
  kernel_.resize(static_cast<int>(weights.size()), 1, 1);
  for (std::size_t i = 0; i < weights.size(); ++i) kernel_[i] = weights[i];
  dx_ = dx;
  dt_ = dt;
  diffusion_ = diffusion;
  longest_ = longest;
  return kernel_;
}

}  // namespace nbx
