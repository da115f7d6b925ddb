// Textures: colors over a surface or through space.
#pragma once

#include <memory>

#include "host/interface/scene.h"

namespace host {

/// What stands behind a shader of the scene, ready for its time. Colors are scene-linear and need
/// not stay within 0 and 1; where a number is asked for, take Brightness of the color.
///
/// A texture never changes once it is made. Sample may be called from any number of threads.
class Texture {
 public:
  virtual ~Texture() = default;

  /// The color at a point, at `time` seconds. On surfaces the point is (u, v, 0); an image shows
  /// its whole picture over u and v from 0 to 1, with v downwards, repeats itself beyond, and takes
  /// no notice of the third coordinate and the time. In space the textures fill all of it.
  virtual Vector Sample(const Vector& point, double time) const = 0;
};

/// The number that a color counts for: the mean of its components.
inline double Brightness(const Vector& color) { return (color.x + color.y + color.z) / 3; }

/// An entry of the document's "textures".
class BaseShader : public BaseList2D {
 public:
  virtual BaseShader* GetNext() const = 0;
  /// As it is at the document's time. The next ExecutePasses may put another texture in its place:
  /// who needs this one longer keeps a copy of the pointer. Never null: an image that can't be read
  /// is an error of the reading.
  virtual const std::shared_ptr<const Texture>& GetTexture() const = 0;
};

/// The host's own textures.
inline constexpr std::int32_t kImageShader = 5801;
inline constexpr std::int32_t kNoiseShader = 5802;
inline constexpr std::int32_t kCheckerShader = 5803;
inline constexpr std::int32_t kGradientShader = 5804;

}  // namespace host
