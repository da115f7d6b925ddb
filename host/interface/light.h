// Lights: objects that shine along their z axis or in all directions.
#pragma once

#include "host/interface/scene.h"

namespace host {

/// `color` times `intensity` is the radiance, and so the pixel value, of a white diffuse surface
/// that faces the light. With LIGHT_FALLOFF_INVERSE_SQUARE this holds at the distance
/// LIGHT_FALLOFF_DISTANCE; elsewhere it follows the inverse square.
enum LightParameter : std::int32_t {
  LIGHT_TYPE = 1100,              ///< cycle of LightType
  LIGHT_COLOR = 1101,             ///< vector
  LIGHT_INTENSITY = 1102,         ///< real, at least 0
  LIGHT_FALLOFF = 1103,           ///< cycle of LightFalloff; not used by directional lights
  LIGHT_FALLOFF_DISTANCE = 1104,  ///< real, units, above 0
  LIGHT_INNER_ANGLE = 1105,       ///< real, degrees: full angle of the inner, bright cone
  LIGHT_OUTER_ANGLE = 1106,       ///< real, degrees: full angle outside of which a spot is dark
  LIGHT_SIZE_X = 1107,            ///< real, units: width of an area light along x
  LIGHT_SIZE_Y = 1108,            ///< real, units: height of an area light along y
  LIGHT_RADIUS = 1109,            ///< real, units: radius of a point or spot light, for
                                  ///< soft shadows
  LIGHT_ANGLE = 1110,             ///< real, degrees: apparent diameter of a directional light
  LIGHT_SHADOW = 1111,            ///< cycle of LightShadow
  LIGHT_EXCLUDE = 100000,         ///< links: objects that the light does not reach, and
                                  ///< everything under them
};

enum LightType : std::int32_t {
  LIGHT_TYPE_POINT = 0,
  LIGHT_TYPE_SPOT = 1,         ///< along z; fades smoothly between the two angles
  LIGHT_TYPE_DIRECTIONAL = 2,  ///< parallel light along z
  LIGHT_TYPE_AREA = 3,         ///< a rectangle around the origin that emits toward z with the
                               ///< cosine; its color applies straight in front of it
};

enum LightFalloff : std::int32_t {
  LIGHT_FALLOFF_NONE = 0,
  LIGHT_FALLOFF_INVERSE_SQUARE = 1,
};

enum LightShadow : std::int32_t {
  LIGHT_SHADOW_NONE = 0,  ///< no shadows
  LIGHT_SHADOW_HARD = 1,  ///< as if from a point or of angle 0; an area light from its center
  LIGHT_SHADOW_SOFT = 2,  ///< depending on the size of the light
};

}  // namespace host
