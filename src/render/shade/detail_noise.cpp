#include "render/shade/detail_noise.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "render/shade/detail_noise_kernels.h"
#include "util/isa.h"

NBX_DECLARE_ISA(DetailNoiseKernels, kDetailNoiseKernels)

namespace nbx {

const DetailNoiseKernels& detail_noise_kernels() { return NBX_SELECT_ISA(kDetailNoiseKernels); }

namespace {

constexpr double kLeast = std::numeric_limits<double>::epsilon();

// A copy whose rows repeat their first three floats at the end.
FieldHandle with_rows_closed(const Field<float>& tile) {
  const int n = tile.nx();
  FieldHandle closed = acquire_field({n + 3, n, n});
  for (int k = 0; k < n; ++k)
    for (int j = 0; j < n; ++j) {
      float* row = &(*closed)(0, j, k);
      std::copy_n(&tile(0, j, k), n, row);
      std::copy_n(row, 3, row + n);
    }
  return closed;
}

}  // namespace

void set_detail_noise(DetailNoise& noise, const DetailNoiseParams& params, double voxel,
                      double time) {
  const double a = std::max(params.scale_a, 0.0), b = std::max(params.scale_b, 0.0);
  const double small = std::max({std::min(a, b), voxel, kLeast});
  const double large = std::max({a, b, small});
  noise.frequency = std::max(voxel, kLeast) / large;
  noise.amplitude = static_cast<float>(params.percent * 0.01) / noise.frequency;
  // Beyond 64 octaves float coordinates can't distinguish cells.
  noise.octaves = std::min(std::log2(large / small) + 1, 64.0);
  noise.gain = std::clamp(params.gain, 0.001, 1.0);
  if (noise.amplitude == 0) return;
  if (!noise.noise) noise.noise = std::make_shared<WaveletNoise>();
  const double phase = params.period != 0 ? time / params.period : 0;
  advance_tile_from_start(*noise.noise, phase, true, false);
  noise.tile = with_rows_closed(noise.noise->tile);
}

void DetailNoise::curl(Colors& d, const Points& c) const {
  float* const to[3] = {d.c[0], d.c[1], d.c[2]};
  detail_noise_kernels().curl(to, {tile->data(), tile->ny()}, {frequency, amplitude, octaves, gain},
                              c.x, c.y, c.z, c.n);
}

}  // namespace nbx
