#include "host/scene/texture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "host/scene/builtin_classes.h"
#include "host/scene/image_texture.h"

namespace host {
namespace {

/// Common part of the procedural textures: a blend of two colors, and coordinates relative to an
/// offset in units of a scale.
class TwoColors {
 public:
  explicit TwoColors(const BaseContainer& data)
      : a_(data.GetVector(kShaderColorA)),
        b_(data.GetVector(kShaderColorB, {1, 1, 1})),
        offset_(data.GetVector(kShaderOffset)),
        inverse_scale_(1 / data.GetReal(kShaderScale, 1)) {}

  Vector Place(const Vector& point) const { return (point - offset_) * inverse_scale_; }
  Vector Mix(double share) const { return a_ * (1 - share) + b_ * share; }

 private:
  Vector a_, b_, offset_;
  double inverse_scale_;
};

class Checker final : public Texture {
 public:
  explicit Checker(const BaseContainer& data) : colors_(data) {}
  Vector Sample(const Vector& point, double) const override {
    const Vector p = colors_.Place(point);
    const double cube = std::floor(p.x) + std::floor(p.y) + std::floor(p.z);
    return colors_.Mix(std::fmod(cube, 2) == 0 ? 0 : 1);
  }

 private:
  TwoColors colors_;
};

class GradientTexture final : public Texture {
 public:
  explicit GradientTexture(const BaseContainer& data)
      : colors_(data), direction_(data.GetVector(kShaderDirection, {1, 0, 0})) {
    const double length = Length(direction_);
    if (length > 0) direction_ = direction_ * (1 / length);
  }
  Vector Sample(const Vector& point, double) const override {
    return colors_.Mix(std::clamp(Dot(colors_.Place(point), direction_), 0.0, 1.0));
  }

 private:
  TwoColors colors_;
  Vector direction_;
};

constexpr std::uint32_t kPrimes[4] = {0x9e3779b1U, 0x85ebca77U, 0xc2b2ae3dU, 0x27d4eb2fU};

/// The finalizer of MurmurHash3.
std::uint32_t Scramble(std::uint32_t h) {
  h = (h ^ (h >> 16)) * 0x85ebca6bU;
  h = (h ^ (h >> 13)) * 0xc2b2ae35U;
  return h ^ (h >> 16);
}

double Fade(double t) { return t * t * t * (t * (t * 6 - 15) + 10); }

/// The dot product of d and one of the 32 vectors that have three components of 1 or -1 and one of
/// 0.
double GradientTimes(std::uint32_t hash, const double (&d)[4]) {
  const std::uint32_t zero = hash & 3;
  double sum = 0;
  for (std::uint32_t k = 0; k < 4; ++k)
    if (k != zero) sum += (hash >> (k + 2) & 1) != 0 ? d[k] : -d[k];
  return sum;
}

/// Roughly in [-1, 1], and 0 at integer coordinates.
double GradientNoise(const std::array<double, 4>& p, std::uint32_t seed) {
  std::uint32_t cell[4];
  double t[4], weight[4];
  for (int k = 0; k < 4; ++k) {
    const double low = std::floor(p[k]);
    t[k] = p[k] - low;
    weight[k] = Fade(t[k]);
    // Coordinates wrap around at 2^32.
    cell[k] = static_cast<std::uint32_t>(static_cast<std::int64_t>(std::fmod(low, 4294967296.0)));
  }
  double sum = 0;
  for (std::uint32_t corner = 0; corner < 16; ++corner) {
    std::uint32_t hash = Scramble(seed);
    double d[4], w = 1;
    for (std::uint32_t k = 0; k < 4; ++k) {
      const std::uint32_t high = corner >> k & 1;
      hash = Scramble(hash ^ (cell[k] + high) * kPrimes[k]);
      d[k] = t[k] - high;
      w *= high != 0 ? weight[k] : 1 - weight[k];
    }
    if (w != 0) sum += w * GradientTimes(hash, d);
  }
  return sum;
}

class Noise final : public Texture {
 public:
  explicit Noise(const BaseContainer& data)
      : colors_(data),
        speed_(data.GetReal(kShaderSpeed)),
        contrast_(data.GetReal(kShaderContrast, 1)),
        octaves_(data.GetLong(kShaderOctaves, 4)),
        seed_(data.GetLong(kShaderSeed)) {}

  Vector Sample(const Vector& point, double time) const override {
    const Vector p = colors_.Place(point);
    double sum = 0, frequency = 1, weight = 1;
    for (int i = 0; i < octaves_; ++i, frequency *= 2, weight /= 2)
      sum += weight * GradientNoise({p.x * frequency, p.y * frequency, p.z * frequency,
                                     time * speed_ * frequency},
                                    seed_ + i);
    return colors_.Mix(std::clamp(0.5 + 0.5 * contrast_ * sum, 0.0, 1.0));
  }

 private:
  TwoColors colors_;
  double speed_, contrast_;
  int octaves_;
  std::uint32_t seed_;
};

}  // namespace

std::unique_ptr<Texture> MakeTexture(std::int32_t type, const BaseContainer& data,
                                     const std::string& file, const std::string& place) {
  if (type == kImageShader) return ReadImage(file, data.GetBool(kShaderLinear), place);
  if (type == kNoiseShader) return std::make_unique<Noise>(data);
  if (type == kCheckerShader) return std::make_unique<Checker>(data);
  return std::make_unique<GradientTexture>(data);
}

}  // namespace host
