// The sum of all bands of noise.
#include <algorithm>

#include "math/field_operators.h"
#include "math/wavelet_noise.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

// Calls band(frequency, amplitude) for each band. Doubling is exact, so the frequency can be
// applied to the coordinates at any time.
template <class Band>
void for_each_band(const NoiseParams& params, Band band) {
  // Beyond 64 octaves float coordinates can't distinguish cells. NaN counts as 0.
  const float bands = std::min(std::max(0.0f, params.bands), 64.0f);
  const int whole = static_cast<int>(bands);
  float frequency = params.frequency, amplitude = params.amplitude;
  band(frequency, amplitude);
  for (int b = 1; b < whole; ++b) band(frequency *= 2, amplitude *= params.persistence);
  const float rest = bands - static_cast<float>(whole);
  if (rest > 0) band(frequency * 2, amplitude * (rest * params.persistence));
}

}  // namespace

void fractal3D_field(Field<float>& field, const WaveletNoise& noise, const NoiseParams& params,
                     bool zero_first) {
  if (zero_first) set(field, 0);
  for_each_band(params, [&](float frequency, float amplitude) {
    noise_field(field, noise, frequency, amplitude, params.offset);
  });
}

void m_fractal3D_field(MField& field, const WaveletNoise& noise, const NoiseParams& params,
                       bool zero_first) {
  try_gpu(no_kernel, [&] {
    fractal3D_field(zero_first ? field.overwrite_cpu() : field.write_cpu(), noise, params,
                    zero_first);
  });
}

float fractal3D(const WaveletNoise& noise, const NoiseParams& params, const Vec3f& p,
                int derivative) {
  const Vec3f at = p + params.offset;
  float sum = 0;
  for_each_band(params, [&](float frequency, float amplitude) {
    sum += amplitude * evaluate(noise, at * frequency, derivative);
  });
  return sum;
}

std::vector<NoiseBand> noise_bands(const NoiseParams& params) {
  std::vector<NoiseBand> bands;
  for_each_band(params, [&](float frequency, float amplitude) {
    bands.push_back({frequency, amplitude});
  });
  return bands;
}

}  // namespace nbx
