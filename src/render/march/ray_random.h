// Random numbers of one ray: PCG32 (M. E. O'Neill, "PCG: A family of simple fast space-efficient
// statistically good algorithms for random number generation", Harvey Mudd College
// HMC-CS-2014-0905, 2014). Each ray has its own generator, made from the ray's seed, so that a
// picture is the same for any number of threads.
#pragma once

#include <cstdint>

namespace nbx {

class RayRandom {
 public:
  explicit RayRandom(std::uint64_t seed) : state_(seed + kIncrement) { next(); }

  std::uint32_t next() {
    const std::uint64_t s = state_;
    state_ = s * 6364136223846793005u + kIncrement;
    const auto word = static_cast<std::uint32_t>(((s >> 18) ^ s) >> 27);
    const auto turn = static_cast<std::uint32_t>(s >> 59);
    return word >> turn | word << (-turn & 31);
  }

  /// Uniform in (0, 1), without the ends.
  double uniform() { return (next() + 1.0) / 4294967297.0; }
  /// True with probability 1/2.
  bool coin() { return next() >= 0x80000000u; }

 private:
  static constexpr std::uint64_t kIncrement = 1442695040888963407u;
  std::uint64_t state_;
};

}  // namespace nbx
