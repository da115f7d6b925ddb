#include "bench/physics/result.h"

#include <algorithm>
#include <cmath>

namespace nbx::physics {

Line fit_line(const std::vector<double>& x, const std::vector<double>& y) {
  const auto n = static_cast<double>(x.size());
  double sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sx += x[i];
    sy += y[i];
    sxx += x[i] * x[i];
    sxy += x[i] * y[i];
  }
  const double slope = (n * sxy - sx * sy) / (n * sxx - sx * sx);
  return {slope, (sy - slope * sx) / n};
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double largest(const std::vector<double>& values) {
  return *std::max_element(values.begin(), values.end());
}

double fit_exponent(const std::vector<double>& x, const std::vector<double>& y) {
  const auto logs = [](std::vector<double> v) {
    std::transform(v.begin(), v.end(), v.begin(), [](double a) { return std::log(a); });
    return v;
  };
  return fit_line(logs(x), logs(y)).slope;
}

}  // namespace nbx::physics
