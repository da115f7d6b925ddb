// The compositing tag: which rays meet its object, and what lies under it.
#pragma once

#include "host/interface/scene.h"

namespace host {

/// Parameters of a compositing tag (type kCompositingTag); all are bools, on if not set, but for
/// the last two.
enum CompositingParameter : std::int32_t {
  COMPOSITING_CAST_SHADOWS = 1000,
  COMPOSITING_SEEN_BY_CAMERA = 1002,
  COMPOSITING_SEEN_BY_RAYS = 1003,  ///< off: not by any of reflection, refraction, GI and AO
  COMPOSITING_SEEN_BY_GI = 1017,
  COMPOSITING_SELF_SHADOW = 1126,
  COMPOSITING_SEEN_BY_TRANSPARENCY = 1127,
  COMPOSITING_SEEN_BY_REFLECTION = 1128,
  COMPOSITING_SEEN_BY_REFRACTION = 1129,
  COMPOSITING_SEEN_BY_AO = 1142,
  COMPOSITING_MATTE = 1143,        ///< bool, off if not set
  COMPOSITING_MATTE_COLOR = 1144,  ///< vector
};

}  // namespace host
