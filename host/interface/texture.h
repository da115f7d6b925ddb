// Textures: colors over a surface or through space.
#pragma once

#include <memory>

#include "host/interface/scene.h"

namespace host {

/// The texture of a shader, ready for its time. Colors are scene-linear and may be outside of 0 to
/// 1. Where a number is needed, use the Brightness of the color.
///
/// A texture never changes after construction. Sample may be called from any number of threads.
class Texture {
 public:
  virtual ~Texture() = default;

  /// The color at a point, at `time` seconds. On surfaces the point is (u, v, 0). An image covers u
  /// and v from 0 to 1, with v pointing down, repeats beyond, and ignores the third coordinate and
  /// the time. Other textures fill all of space.
  virtual Vector Sample(const Vector& point, double time) const = 0;
};

/// The number that a color represents: the mean of its components.
inline double Brightness(const Vector& color) { return (color.x + color.y + color.z) / 3; }

/// An entry of the document's "textures".
class BaseShader : public BaseList2D {
 public:
  virtual BaseShader* GetNext() const = 0;
  /// The texture at the document's time. The next ExecutePasses may replace it; copy the pointer to
  /// keep this one. Never null, since an unreadable image is an error when the scene is read.
  virtual const std::shared_ptr<const Texture>& GetTexture() const = 0;
};

/// Built-in textures.
inline constexpr std::int32_t kImageShader = 5801;
inline constexpr std::int32_t kNoiseShader = 5802;
inline constexpr std::int32_t kCheckerShader = 5803;
inline constexpr std::int32_t kGradientShader = 5804;

}  // namespace host
