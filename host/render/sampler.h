// Well-distributed random numbers for one sample of a pixel.
//
// A two-dimensional Sobol sequence with hash-based Owen scrambling: B. Burley, Practical hash-based
// Owen scrambling, JCGT 9(4), 2020. Each pair of dimensions is shuffled separately, so the samples
// of a pixel are evenly distributed in each pair, and pixels are independent of each other. The
// numbers depend only on the seed of the pixel and the index of the sample.
#pragma once

#include <cstdint>

namespace host {

/// A hash in which every bit of the result depends on every bit of both arguments: the finalizer of
/// SplitMix64 (G. Steele, D. Lea, C. Flood, 2014).
inline std::uint64_t HashOf(std::uint64_t a, std::uint64_t b) {
  std::uint64_t x = a + 0x9e3779b97f4a7c15ULL * (b + 1);
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

class Sampler {
 public:
  Sampler(std::uint64_t seed, std::uint32_t sample) : seed_(seed), sample_(sample) {}

  struct Pair {
    double u = 0, v = 0;  ///< each in [0, 1)
  };
  Pair Next2D();
  double Next1D() { return Next2D().u; }
  /// A number that is unique to one ray of the picture.
  std::uint64_t NextSeed() { return HashOf(HashOf(seed_, sample_), ~dimension_++); }

 private:
  std::uint64_t seed_;
  std::uint32_t sample_;
  std::uint64_t dimension_ = 0;
};

}  // namespace host
