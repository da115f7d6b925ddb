// The lights of a scene at one frame, as the renderer asks them.
#pragma once

#include <optional>
#include <vector>

#include "host/interface/light.h"
#include "host/interface/video_post.h"

namespace host {

/// Light from one place of a light, on its way to a point.
struct LightSample {
  Vector direction;  ///< from the point towards the light, of unit length
  double distance = 0;
  /// What arrives, shadows apart, at a surface that faces the direction: irradiance over pi.
  Vector color;
};

class LightSource {
 public:
  /// Reads a light object at the document's time.
  explicit LightSource(BaseObject& object);
  /// The light of a scene without one: a soft sun that shines along a direction.
  static LightSource Default(const Vector& direction);

  /// Light from the place of the light that (u, v) of the unit square chooses; the mean over the
  /// square is what the whole light gives. Nothing, if none of it reaches the point.
  std::optional<LightSample> Sample(const Vector& point, double u, double v) const;

  bool IsShadowed() const { return shadow_ != LIGHT_SHADOW_NONE; }
  /// True if (u, v) makes a difference.
  bool HasSize() const;
  const RayLight& Info() const { return info_; }

 private:
  LightSource() = default;
  Vector ColorAt(double distance) const;
  double SpotShare(const Vector& to_point) const;
  std::optional<LightSample> FromPlace(const Vector& place, const Vector& point) const;
  std::optional<LightSample> SampleArea(const Vector& point, double u, double v) const;
  std::optional<LightSample> SampleDirectional(double u, double v) const;

  RayLight info_;
  Vector axis_{0, 0, 1};
  Vector half_x_, half_y_;  ///< of an area light
  std::int32_t shadow_ = LIGHT_SHADOW_SOFT;
  double falloff_distance_ = 0;  ///< 0: no falloff
  double inner_cosine_ = 1, outer_cosine_ = -1;
  double radius_ = 0;
  double cone_cosine_ = 1;  ///< of the half angle that a directional light fills
};

/// All lights of the document that are switched on.
std::vector<LightSource> ReadLights(const BaseDocument& document);

}  // namespace host
