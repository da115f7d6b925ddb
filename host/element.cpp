#include "host/element.h"

#include <algorithm>

namespace host {

void ElementState::Evaluate(double frame) {
  for (const auto& [id, track] : tracks) data.Set(id, track.Evaluate(frame));
}

BaseObject* SceneTag::GetObject() const { return object_; }

void SceneObject::Evaluate(double frame) {
  const auto follow = [frame](const std::optional<Track>& track, Vector& value) {
    if (track) value = std::get<Vector>(track->Evaluate(frame));
  };
  follow(position_track, transform.position);
  follow(rotation_track, transform.rotation);
  follow(scale_track, transform.scale);
  state_.Evaluate(frame);
  for (const auto& tag : tags_) tag->State().Evaluate(frame);
}

std::pair<Vector, Vector> SceneObject::Bounds() const {
  if (const auto* part = static_cast<const ObjectData*>(state_.plugin_part.get())) {
    Vector centre, radius;
    part->GetDimension(*this, centre, radius);
    return {centre, radius};
  }
  if (points.empty()) return {};
  Vector low = points.front(), high = low;
  for (const Vector& p : points) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return {(low + high) * 0.5, (high - low) * 0.5};
}

}  // namespace host
