// The detail that an up-resolution run adds to its scaled-up velocity: noise in the texture
// coordinates, stronger where the coarse gas swirls more.
#pragma once

#include "math/wavelet_noise.h"
#include "simulation/solver_params.h"
#include "simulation/upres/low_frame.h"
#include "simulation/upres/texture_coordinates.h"

namespace nbx {

/// The bands of the noise: those that the fine grid adds to the coarse one, and before them
/// `upres_extra_bands` larger ones.
NoiseParams upres_noise(const SolverParams& params);

class UpresDetail {
 public:
  /// Adds to the interior faces of the fine velocity the curl of
  ///
  ///     min(|w|, 1 / frame_length) noise(tex),   w = curl u of the coarse gas,
  ///
  /// whose divergence is 0. `low_dx` is the edge of a coarse cell.
  void add(std::array<MField, 3>& velocity, const LowFrame& low, TextureCoordinates& tex,
           const SolverParams& params, double low_dx, double frame_length);

 private:
  void make_tile();

  WaveletNoise noise_;
  Field<float> rows_;  // of the tile, for the kernels
  NoiseRows tile_{};
};

}  // namespace nbx
