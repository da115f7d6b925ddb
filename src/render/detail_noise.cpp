#include "render/detail_noise.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace nbx {

namespace {

constexpr double kLeast = std::numeric_limits<double>::epsilon();

}  // namespace

void set_detail_noise(DetailNoise& noise, const DetailNoiseParams& params, double voxel,
                      double time) {
  const double a = std::max(params.scaleA, 0.0), b = std::max(params.scaleB, 0.0);
  const double small = std::max({std::min(a, b), voxel, kLeast});
  const double large = std::max({a, b, small});
  noise.frequency = static_cast<float>(std::max(voxel, kLeast) / large);
  noise.amplitude = static_cast<float>(params.percent * 0.01) / noise.frequency;
  noise.octaves = static_cast<float>(std::log2(large / small) + 1);
  noise.gain = static_cast<float>(std::clamp(params.gain, 0.001, 1.0));
  if (noise.amplitude == 0) return;
  if (!noise.noise) noise.noise = std::make_shared<WaveletNoise>();
  const double phase = params.period != 0 ? time / params.period : 0;
  advance_tile(*noise.noise, static_cast<float>(phase), true, false);
}

// d = curl (N1, N2, N3), three potentials from far apart in one noise. Its slopes are minus the
// partial derivatives, which turns d round and is as good a displacement.
Vec3f DetailNoise::curl(const Vec3f& c) const {
  NoiseParams params;
  params.frequency = frequency;
  params.amplitude = amplitude;
  params.bands = octaves;
  params.persistence = gain;
  const Vec3f c2 = c + Vec3f(123.456f, 234.567f, 345.678f);
  const Vec3f c3 = c + Vec3f(246.912f, 469.134f, 691.356f);
  const auto slope = [&](const Vec3f& p, int axis) { return fractal3D(*noise, params, p, axis); };
  return {slope(c3, 2) - slope(c2, 3), slope(c, 3) - slope(c3, 1), slope(c2, 1) - slope(c, 2)};
}

}  // namespace nbx
