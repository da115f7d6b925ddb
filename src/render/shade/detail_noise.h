// Fine structure that the grid doesn't hold: points are moved along the curl of wavelet noise
// before a shader looks its channels up. A curl has no divergence, so gas keeps its volume.
#pragma once

#include <memory>

#include "math/wavelet_noise.h"
#include "render/march/sample_block.h"

namespace nbx {

/// As the user sets it.
struct DetailNoiseParams {
  double percent = 0;               // strength; 0: off
  double scale_a = 1, scale_b = 1;  // the ends of the range of sizes, in object units
  double gain = 0.56;               // amplitude of one octave over that of the octave before
  double period = 1;                // seconds in which the noise becomes another one; 0: never
};

/// Copies share the noise.
struct DetailNoise {
  std::shared_ptr<WaveletNoise> noise;  // its tile is made where the amplitude isn't 0
  FieldHandle tile;                     // the same for the kernels, see NoiseTile
  float frequency = 1;                  // noise cells per voxel in the first octave
  float amplitude = 0;                  // of the first octave, in voxels
  float octaves = 1;                    // 1 to 64; may be fractional
  float gain = 0.56123102f;             // 2^(-5/6)

  bool on() const { return amplitude != 0 && tile; }

  /// d = curl (N1, N2, N3) at points c in voxels of the domain: how far they move, in voxels. The
  /// three potentials are taken from far apart in one noise, whose slopes are minus the partial
  /// derivatives: that turns d round, and is as good.
  void curl(Colors& d, const Points& c) const;
};

/// `voxel` is the edge of a voxel in object units, `time` the document's in seconds. The noise
/// depends on the time alone, so a sequence may be rendered in parts and in any order.
void set_detail_noise(DetailNoise& noise, const DetailNoiseParams& params, double voxel,
                      double time);

}  // namespace nbx
