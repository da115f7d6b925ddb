// Fine structure that the grid doesn't hold: points are moved along the curl of wavelet noise
// before a shader looks its channels up. A curl has no divergence, so gas keeps its volume.
#pragma once

#include <memory>

#include "math/wavelet_noise.h"

namespace nbx {

/// As the user sets it.
struct DetailNoiseParams {
  double percent = 0;             // strength; 0: off
  double scaleA = 1, scaleB = 1;  // the ends of the range of sizes, in object units
  double gain = 0.56;             // amplitude of one octave over that of the octave before
  double period = 1;              // seconds in which the noise becomes another one; 0: never
};

struct DetailNoise {
  std::shared_ptr<WaveletNoise> noise;  // its tile is made where the amplitude isn't 0
  float frequency = 1;                  // noise cells per voxel in the first octave
  float amplitude = 0;                  // of the first octave, in voxels
  float octaves = 1;                    // may be fractional
  float gain = 0.56123102f;             // 2^(-5/6)

  bool on() const { return amplitude != 0 && noise; }

  /// The three derivatives' curl at point c in voxels of the domain: how far a point moves, in
  /// voxels.
  Vec3f curl(const Vec3f& c) const;
};

/// `voxel` is the edge of a voxel in object units, `time` the seconds since the render's start.
void set_detail_noise(DetailNoise& noise, const DetailNoiseParams& params, double voxel,
                      double time);

}  // namespace nbx
