// From a value to a color, in linear light: the color of smoke, or the glow of fire.
#pragma once

#include <array>
#include <vector>

#include "render/march/sample_block.h"

namespace nbx {

/// Immutable. Any number of threads may look up colors.
class ColorRamp {
 public:
  virtual ~ColorRamp() = default;

  /// The colors of n <= kBlock values. `values` is aligned and readable up to kBlock (see
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
  Interpolation interpolation = Interpolation::kLinear;  // up to the next knot
};

/// Interpolates between knots. Beyond the first and the last knot the color is constant. Without
/// knots it is black.
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
  double exposure = 1;     // divides the colors; 0 counts as the machine epsilon
  double compression = 5;  // 0 keeps the physical brightness; large values approach its 4th root
  Color tint{1, 1, 1};
};

/// The glow of a black body. Values 0 to 1 cover the range of temperatures; the first table entry
/// is black.
class BlackbodyRamp final : public ColorRamp {
 public:
  static constexpr int kCount = 256;

  explicit BlackbodyRamp(const BlackbodyParams& params = {});

  void lookup(Colors& out, const float* values, int n) const override;
  Color maxColor() const override;
  using ColorRamp::lookup;

 private:
  std::array<std::array<float, kCount + 1>, 3>
      channels_{};  // with the extra float that kernels read
};

}  // namespace nbx
