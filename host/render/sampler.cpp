#include "host/render/sampler.h"

namespace host {
namespace {

std::uint32_t Reversed(std::uint32_t x) {
  x = ((x >> 1) & 0x55555555U) | ((x & 0x55555555U) << 1);
  x = ((x >> 2) & 0x33333333U) | ((x & 0x33333333U) << 2);
  x = ((x >> 4) & 0x0f0f0f0fU) | ((x & 0x0f0f0f0fU) << 4);
  return __builtin_bswap32(x);
}

/// Flips each bit depending only on the bits below it: S. Laine and T. Karras, Stratified sampling
/// for stochastic transparency, CGF 30(4), 2011, with Burley's constants.
std::uint32_t Permuted(std::uint32_t x, std::uint32_t seed) {
  x += seed;
  x ^= x * 0x6c50b47cU;
  x ^= x * 0xb82f1e52U;
  x ^= x * 0xc7afe638U;
  x ^= x * 0x8d22f6e6U;
  return x;
}

std::uint32_t Scrambled(std::uint32_t x, std::uint32_t seed) {
  return Reversed(Permuted(Reversed(x), seed));
}

/// The second dimension of the Sobol sequence. The first is the index with reversed bits.
std::uint32_t SecondSobol(std::uint32_t index) {
  std::uint32_t x = 0;
  for (std::uint32_t column = 1U << 31; index != 0; index >>= 1, column ^= column >> 1)
    if (index & 1) x ^= column;
  return x;
}

}  // namespace

Sampler::Pair Sampler::Next2D() {
  const std::uint64_t hash = HashOf(seed_, dimension_);
  const std::uint64_t second_hash = HashOf(hash, dimension_++);
  const std::uint32_t index = Scrambled(sample_, static_cast<std::uint32_t>(hash));
  const auto scrambled = [](std::uint32_t x, std::uint64_t seed) {
    return Scrambled(x, static_cast<std::uint32_t>(seed)) * 0x1p-32;
  };
  return {scrambled(Reversed(index), hash >> 32), scrambled(SecondSobol(index), second_hash)};
}

}  // namespace host
