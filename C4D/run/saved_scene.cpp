#include "C4D/run/saved_scene.h"

#include <QFileInfo>
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

std::unique_ptr<SavedScene> SavedScene::open(const host::BaseObject& volume,
                                             const std::string& directory) {
  const std::string path = autosave_file(directory);
  if (!QFileInfo::exists(QString::fromStdString(path)) || !host_services()) return nullptr;
  auto scene = std::make_unique<SavedScene>();
  scene->document_ = host_services()->LoadDocument({path});
  if (scene->document_) scene->volume_ = same_volume(volume, *scene->document_);
  return scene->volume_ ? std::move(scene) : nullptr;
}

SceneRecord SavedScene::at(const Fraction& time, bool upres) {
  evaluate(*document_, to_base_time(time));
  return {scene_values(*volume_, upres, ComparedWith::kSavedScene), frame_values(*volume_)};
}

}  // namespace nbx
