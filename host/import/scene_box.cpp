#include "host/import/scene_box.h"

#include <algorithm>

namespace host {

void SceneBox::Add(const Vector& point) {
  low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
  high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
}

bool IsAnimated(const Document& document) {
  for (const SceneObject* object : document.AllObjects())
    if (object->position_track || object->rotation_track || object->scale_track ||
        object->shapes.size() > 1)
      return true;
  return false;
}

SceneBox MeshBox(Document& document, bool all_frames) {
  const auto evaluate = [&](std::int32_t frame) {
    document.SetTime(BaseTime::FromFrame(frame, document.fps));
    document.ExecutePasses(nullptr, true, true, true);
  };
  SceneBox box;
  for (std::int32_t frame = document.start; frame <= document.end; ++frame) {
    evaluate(frame);
    for (SceneObject* object : document.AllObjects()) {
      const PolygonObject* mesh = object->IsOn() ? GetPolygons(object) : nullptr;
      if (!mesh) continue;
      const Matrix place = object->GetMg();
      for (std::int32_t i = 0; i < mesh->GetPointCount(); ++i)
        box.Add(place * mesh->GetPointR()[i]);
    }
    if (!all_frames) break;
  }
  evaluate(document.start);
  return box;
}

}  // namespace host
