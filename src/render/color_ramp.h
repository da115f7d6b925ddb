// From a value to a color, in linear light: what smoke of a value looks like, or how fire of a
// value glows.
#pragma once

#include <array>
#include <vector>

#include "render/march/sample_block.h"

namespace nbx {

/// Constant once made; any number of threads may look up.
class ColorRamp {
 public:
  virtual ~ColorRamp() = default;

  /// The colors of n <= kBlock values, which are aligned and readable up to kBlock (see
  /// march_kernels.h). NaN counts as the lowest value.
  virtual void lookup(Colors& out, const float* values, int n) const = 0;
  /// The largest value of each channel over the ramp.
  virtual Color maxColor() const = 0;

  Color lookup(float value) const;
};

struct GradientKnot {
  enum class Interpolation { kLinear, kSmooth, kStep };
  float position = 0;
  Color color{0, 0, 0};
  Interpolation interpolation = Interpolation::kLinear;  // towards the next knot
};

/// Colors between knots; beyond the outer knots their colors go on. Without knots it is black.
class GradientRamp final : public ColorRamp {
 public:
  /// Knots in any order. Their colors are multiplied by `scale`.
  explicit GradientRamp(std::vector<GradientKnot> knots, double scale = 1);

  void lookup(Colors& out, const float* values, int n) const override;
  Color maxColor() const override;
  using ColorRamp::lookup;

 private:
  std::vector<GradientKnot> knots_;  // by rising position
};

struct BlackbodyParams {
  double min_kelvin = 600, max_kelvin = 2200;  // a maximum below the minimum counts as the minimum
  double exposure = 1;                         // colors are divided by it; 0 counts as the least
  double compression = 5;  // 0 keeps physical brightness, large a 4th-root curve
  Color tint{1, 1, 1};
};

/// The glow of a black body; values 0 to 1 run over the range of temperatures. The first entry is
/// black.
class BlackbodyRamp final : public ColorRamp {
 public:
  static constexpr int kCount = 256;

  explicit BlackbodyRamp(const BlackbodyParams& params = {});

  void lookup(Colors& out, const float* values, int n) const override;
  Color maxColor() const override;
  using ColorRamp::lookup;

 private:
  std::array<std::array<float, kCount + 1>, 3> channels_{};  // with the float that kernels read
};

}  // namespace nbx
