// The compositing tag: which rays see its object and the objects under it that have no such tag.
#pragma once

#include "host/interface/scene.h"

namespace host {

/// The compositing tag that applies to an object: its own, otherwise that of the nearest parent.
/// Null if there is none.
inline const BaseTag* CompositingTag(const BaseObject& object) {
  for (const BaseObject* o = &object; o; o = o->GetUp())
    for (const BaseTag* tag = o->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == kCompositingTag) return tag;
  return nullptr;
}

/// Parameters of a compositing tag (type kCompositingTag). All are bools that default to true,
/// except the last two.
enum CompositingParameter : std::int32_t {
  COMPOSITING_CAST_SHADOWS = 1000,
  COMPOSITING_SEEN_BY_CAMERA = 1002,
  COMPOSITING_SEEN_BY_RAYS = 1003,  ///< off: hidden from reflection, refraction, GI and AO
  COMPOSITING_SEEN_BY_GI = 1017,
  COMPOSITING_SELF_SHADOW = 1126,
  COMPOSITING_SEEN_BY_TRANSPARENCY = 1127,
  COMPOSITING_SEEN_BY_REFLECTION = 1128,
  COMPOSITING_SEEN_BY_REFRACTION = 1129,
  COMPOSITING_SEEN_BY_AO = 1142,
  COMPOSITING_MATTE = 1143,        ///< bool, default off
  COMPOSITING_MATTE_COLOR = 1144,  ///< vector
};

}  // namespace host
