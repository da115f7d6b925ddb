#include <algorithm>
#include <cmath>
#include <limits>

#include "render/color_ramp.h"
#include "render/march/grid_lookup.h"
#include "render/shade/color_matching.h"

namespace nbx {

namespace {

// Planck's law times the color matching functions, summed over the visible wavelengths:
//
//     (X, Y, Z) = 5e-9 sum M(lambda) (x, y, z)(lambda)
//     M(lambda) = c1 / (lambda^5 (e^(c2 / (lambda T)) - 1))
Vec3d tristimulus(double T) {
  constexpr double c1 = 3.7417717674870777e-16, c2 = 0.014387758028320428;
  Vec3d XYZ;
  for (int n = 0; n < kWavelengths; ++n) {
    const double lambda = (380 + 5 * n) * 1e-9;
    const double M = c1 / (std::pow(lambda, 5) * std::expm1(c2 / (lambda * T)));
    for (int c = 0; c < 3; ++c) XYZ[c] += 5e-9 * M * kColorMatching[n][c];
  }
  return XYZ;
}

// With s = 1 the color keeps its physical brightness, with s = 0 it gets the fourth root of it.
Vec3d compress(const Vec3d& XYZ, double s) {
  const double S = XYZ[0] + XYZ[1] + XYZ[2];
  const Vec3d chromaticity = S != 0 ? XYZ * (1 / S) : XYZ;
  const Vec3d root = chromaticity * std::sqrt(std::sqrt(S));
  return root + (XYZ - root) * s;
}

// Linear RGB with the primaries of ITU-R BT.709 and white D65. Colors outside of this gamut are
// desaturated by adding gray until no channel is negative.
Vec3d to_rgb(const Vec3d& XYZ) {
  const Vec3d rgb(dot(Vec3d(3.240479, -1.53715, -0.498535), XYZ),
                  dot(Vec3d(-0.969256, 1.875992, 0.041556), XYZ),
                  dot(Vec3d(0.055648, -0.204043, 1.057311), XYZ));
  const double least = std::min({rgb[0], rgb[1], rgb[2], 0.0});
  return rgb - Vec3d(least, least, least);
}

}  // namespace

BlackbodyRamp::BlackbodyRamp(const BlackbodyParams& params) {
  const double low = std::max(params.min_kelvin, 1.0), high = std::max(low, params.max_kelvin);
  const double s = std::exp(-params.compression);
  const double gain =
      1 / (params.exposure != 0 ? params.exposure : std::numeric_limits<double>::epsilon());
  for (int i = 0; i < kCount; ++i) {
    const double T = low + i / (kCount - 1.0) * (high - low);
    const Vec3d rgb = i > 0 ? to_rgb(compress(tristimulus(T), s)) : Vec3d();
    for (int c = 0; c < 3; ++c) channels_[c][i] = rgb[c] * params.tint[c] * gain;
  }
}

void BlackbodyRamp::lookup(Colors& out, const float* values, int n) const {
  float* const to[3] = {out.c[0], out.c[1], out.c[2]};
  const float* const from[3] = {channels_[0].data(), channels_[1].data(), channels_[2].data()};
  march_kernels().table(to, from, kCount, values, n);
}

Color BlackbodyRamp::maxColor() const {
  Color most;
  for (int c = 0; c < 3; ++c)
    most[c] = *std::max_element(channels_[c].begin(), channels_[c].end() - 1);
  return most;
}

}  // namespace nbx
