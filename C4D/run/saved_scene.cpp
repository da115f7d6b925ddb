#include "C4D/run/saved_scene.h"

#include <algorithm>
#include <vector>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_access.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"

namespace nbx {

namespace {

void find_volumes(std::vector<host::BaseObject*>& found, host::BaseObject* first,
                  const std::string& name) {
  for (host::BaseObject* object = first; object; object = object->GetNext()) {
    if (object->GetType() == kVolumeObject && object->GetName() == name) found.push_back(object);
    find_volumes(found, object->GetDown(), name);
  }
}

}  // namespace

host::BaseObject* same_volume(const host::BaseObject& volume, host::BaseDocument& other) {
  std::vector<host::BaseObject*> here, there;
  find_volumes(here, volume.GetDocument().GetFirstObject(), volume.GetName());
  find_volumes(there, other.GetFirstObject(), volume.GetName());
  const auto at = std::find(here.begin(), here.end(), &volume) - here.begin();
  return at < std::ssize(there) ? there[at] : nullptr;
}

std::optional<SceneRecord> saved_scene(const host::BaseObject& volume, const std::string& directory,
                                       const Fraction& time, bool upres) {
  if (!has_autosave(volume) || !host_services()) return {};
  const auto document = host_services()->LoadDocument({autosave_file(directory)});
  if (!document) return {};
  host::BaseObject* const saved = same_volume(volume, *document);
  if (!saved) return {};
  evaluate(*document, to_base_time(time));
  return SceneRecord{scene_values(*saved, upres, ComparedWith::kSavedScene), frame_values(*saved)};
}

}  // namespace nbx
