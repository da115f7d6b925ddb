// The lights of a scene at one frame.
#pragma once

#include <optional>
#include <vector>

#include "host/interface/light.h"
#include "host/interface/video_post.h"

namespace host {

/// Light from one point of a light source to a point of the scene.
struct LightSample {
  Vector direction;  ///< from the point toward the light, of unit length
  double distance = 0;
  /// Unshadowed light at a surface that faces the direction: irradiance over pi.
  Vector color;
};

class LightSource {
 public:
  /// Reads a light object at the document's time.
  explicit LightSource(BaseObject& object);
  /// The light of a scene that has none: a soft sun with this direction.
  static LightSource Default(const Vector& direction);

  /// Samples the light with (u, v) in the unit square. The mean over the square is the light of the
  /// whole source. Nothing if the sample doesn't reach the point.
  std::optional<LightSample> Sample(const Vector& point, double u, double v) const;

  bool IsShadowed() const { return shadow_ != LIGHT_SHADOW_NONE; }
  /// True if the sample depends on (u, v).
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
  double cone_cosine_ = 1;  ///< cosine of the angular radius of a directional light
};

/// All lights of the document that are visible in renders.
std::vector<LightSource> ReadLights(const BaseDocument& document);

}  // namespace host
