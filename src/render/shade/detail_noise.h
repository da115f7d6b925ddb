// Structure finer than the grid: points move along the curl of wavelet noise before a shader looks
// up its channels. A curl has no divergence, so the gas keeps its volume.
#pragma once

#include <memory>

#include "math/wavelet_noise.h"
#include "render/march/sample_block.h"

namespace nbx {

/// The settings of the noise.
struct DetailNoiseParams {
  double percent = 0;               // strength; 0: off
  double scale_a = 1, scale_b = 1;  // smallest and largest size in either order, in object units
  double gain = 0.56;               // amplitude of an octave relative to the one before
  double period = 1;                // seconds until the noise has changed completely; 0: never
};

/// Copies share the noise.
struct DetailNoise {
  std::shared_ptr<WaveletNoise> noise;  // its tile is made if the amplitude isn't 0
  FieldHandle tile;                     // the same for the kernels, see NoiseTile
  float frequency = 1;                  // noise cells per voxel in the first octave
  float amplitude = 0;                  // of the first octave, in voxels
  float octaves = 1;                    // 1 to 64; may be fractional
  float gain = 0.56123102f;             // 2^(-5/6)

  bool on() const { return amplitude != 0 && tile; }

  /// d = -curl (N1, N2, N3) at points c in voxels of the domain: how far they move, in voxels. The
  /// three potentials are places far apart in the same noise. The sign comes from the noise's
  /// slopes, which are minus its partial derivatives, and makes no visible difference.
  void curl(Colors& d, const Points& c) const;
};

/// `voxel` is the edge of a voxel in object units, `time` the document's time in seconds. The noise
/// depends only on the time, so a sequence may be rendered in parts and in any order.
void set_detail_noise(DetailNoise& noise, const DetailNoiseParams& params, double voxel,
                      double time);

}  // namespace nbx
