#include "host/render/scene_walk.h"

namespace host {
namespace {

void AddRow(BaseObject* first, std::vector<BaseObject*>& all) {
  for (BaseObject* object = first; object; object = object->GetNext()) {
    if (!object->GetDeformMode()) continue;
    all.push_back(object);
    AddRow(object->GetDown(), all);
  }
}

}  // namespace

std::vector<BaseObject*> EnabledObjects(const BaseDocument& document) {
  std::vector<BaseObject*> all;
  AddRow(document.GetFirstObject(), all);
  return all;
}

std::vector<BaseObject*> VisibleObjects(const BaseDocument& document) {
  std::vector<BaseObject*> visible = EnabledObjects(document);
  std::erase_if(visible, [](const BaseObject* object) { return !IsVisibleInRender(*object); });
  return visible;
}

}  // namespace host
