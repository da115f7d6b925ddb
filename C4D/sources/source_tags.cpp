#include "C4D/sources/source_tags.h"

#include <algorithm>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "util/log.h"

namespace nbx {

namespace {

void find_tags(host::BaseObject* object, std::vector<host::BaseTag*>& tags) {
  for (; object; object = object->GetNext()) {
    for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == kVolumeTag && ParameterReader(*tag)(TVOLUME.ENABLED))
        tags.push_back(tag);
    find_tags(object->GetDown(), tags);
  }
}

bool has_particles(host::BaseObject& object) {
  return object.GetType() == host::kParticleEmitter || object.GetType() == host::kParticleGroup;
}

/// The mesh of an entry of a selection list; null, with a log line, if it can't be used.
host::PolygonObject* selected_mesh(host::BaseList2D& entry) {
  if (entry.GetType() != host::kSelectionTag) {
    LogMessage() << "Unsupported tag in selection list. Type " << entry.GetType();
    return nullptr;
  }
  host::BaseObject* object = static_cast<host::SelectionTag&>(entry).GetObject();
  host::PolygonObject* mesh = host::ToPoly(object);
  if (!mesh)
    LogMessage() << "Unsupported object for selection. ID " << (object ? object->GetType() : 0);
  else if (mesh->GetPointCount() > 0 && mesh->GetPolygonCount() > 0)
    return mesh;
  else
    LogMessage() << "Empty polygon object for selection";
  return nullptr;
}

}  // namespace

std::vector<host::BaseTag*> find_source_tags(host::BaseDocument& document) {
  std::vector<host::BaseTag*> tags;
  find_tags(document.GetFirstObject(), tags);
  return tags;
}

host::BaseObject* source_object(const host::BaseTag& tag) {
  host::BaseObject* object = tag.GetObject();
  if (!object) LogMessage() << "Tagged Object is NULL";
  for (host::BaseObject* above = object; above; above = above->GetUp())
    if (!above->GetDeformMode()) return nullptr;
  return object;
}

bool is_solid(const host::BaseTag& tag) { return ParameterReader(tag)(TVOLUME.SOLID); }

bool has_solids(const std::vector<host::BaseTag*>& tags) {
  return std::ranges::any_of(tags, [](const host::BaseTag* tag) { return is_solid(*tag); });
}

std::vector<host::PolygonObject*> gather_polygon_objects(host::BaseObject& object) {
  std::vector<host::PolygonObject*> meshes;
  std::vector<host::BaseObject*> stack{&object};
  while (!stack.empty()) {
    host::BaseObject* top = stack.back();
    stack.pop_back();
    if (!top->GetDeformMode()) continue;
    if (host::PolygonObject* mesh = has_particles(*top) ? nullptr : host::GetPolygons(top))
      meshes.push_back(mesh);
    for (host::BaseObject* child = top->GetDown(); child; child = child->GetNext())
      stack.push_back(child);
  }
  return meshes;
}

std::vector<SourceMesh> source_meshes(const host::BaseTag& tag) {
  const host::LinkList selections = ParameterReader(tag)(TVOLUME.SELECTIONS);
  if (selections.empty()) return solid_meshes(tag);
  std::vector<SourceMesh> meshes;
  if (!source_object(tag)) return meshes;
  for (host::BaseList2D* entry : selections)
    if (host::PolygonObject* mesh = selected_mesh(*entry))
      meshes.push_back({mesh, static_cast<host::SelectionTag*>(entry)});
  return meshes;
}

std::vector<SourceMesh> solid_meshes(const host::BaseTag& tag) {
  std::vector<SourceMesh> meshes;
  if (host::BaseObject* object = source_object(tag))
    for (host::PolygonObject* mesh : gather_polygon_objects(*object))
      meshes.push_back({mesh, nullptr});
  return meshes;
}

}  // namespace nbx
