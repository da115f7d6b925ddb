#include "host/scene/document.h"

#include <algorithm>
#include <filesystem>

#include "host/base/document_error.h"
#include "host/scene/mesh_file.h"

namespace host {
namespace {

void AddWithChildren(const std::vector<std::unique_ptr<SceneObject>>& row,
                     std::vector<SceneObject*>& all) {
  for (const auto& object : row) {
    all.push_back(object.get());
    AddWithChildren(object->Children(), all);
  }
}

/// Sets the defaults, then initializes the plug-in's part.
template <class Interface>
bool Init(Element<Interface>& element, const ElementClass& type, BaseDocument& document) {
  ElementState& state = element.State();
  state.document = &document;
  state.type = &type;
  state.name = type.display_name;
  for (const ParameterInfo& info : type.description.parameters)
    if (info.stored) state.data.Set(info.id, info.default_value);
  if (type.make) state.plugin_part = type.make();
  return !state.plugin_part || state.plugin_part->Init(element);
}

}  // namespace

Filename Document::Resolve(const Filename& path) const {
  if (path.path.empty()) return path;
  // An absolute path replaces the folder.
  return {(std::filesystem::path(folder) / path.path).lexically_normal().string()};
}

Document::Document() : render_(std::make_unique<SceneRender>()) {
  static_cast<void>(Init(*render_, *RenderClasses().Find(kRenderData), *this));
}

bool Document::ExecutePasses(const BreakTest* breaks, bool animation, bool, bool caches) {
  const double frame = time_.GetFramePosition(fps);
  if (breaks && breaks->TestBreak()) return false;
  if (animation) Animate(frame);
  if (!caches) return true;
  for (std::size_t i = 0; i < shaders_.size(); ++i)
    shaders_[i]->Update("textures[" + std::to_string(i) + "]");
  for (SceneObject* object : AllObjects()) object->UpdateCache();
  return particle_run_.Update(*this, breaks);
}

void Document::Animate(double frame) {
  for (const auto& material : materials_) material->State().Evaluate(frame);
  for (const auto& shader : shaders_) shader->State().Evaluate(frame);
  render_->State().Evaluate(frame);
  for (const auto& effect : video_posts_) effect->State().Evaluate(frame);
  for (SceneObject* object : AllObjects()) object->Evaluate(frame);
}

SceneObject* Document::AddObject(const ElementClass& type, SceneObject* parent) {
  auto object = std::make_unique<SceneObject>();
  if (!Init(*object, type, *this)) return nullptr;
  auto& row = parent ? parent->children_ : objects_;
  object->up_ = parent;
  if (!row.empty()) row.back()->next_ = object.get();
  row.push_back(std::move(object));
  return row.back().get();
}

SceneTag* Document::AddTag(const ElementClass& type, SceneObject& object) {
  auto tag = std::make_unique<SceneTag>();
  if (!Init(*tag, type, *this)) return nullptr;
  tag->object_ = &object;
  if (!object.tags_.empty()) object.tags_.back()->next_ = tag.get();
  object.tags_.push_back(std::move(tag));
  return object.tags_.back().get();
}

SceneMaterial* Document::AddMaterial(const ElementClass& type) {
  auto material = std::make_unique<SceneMaterial>();
  if (!Init(*material, type, *this)) return nullptr;
  if (!materials_.empty()) materials_.back()->next_ = material.get();
  materials_.push_back(std::move(material));
  return materials_.back().get();
}

SceneShader* Document::AddShader(const ElementClass& type) {
  auto shader = std::make_unique<SceneShader>();
  if (!Init(*shader, type, *this)) return nullptr;
  if (!shaders_.empty()) shaders_.back()->next_ = shader.get();
  shaders_.push_back(std::move(shader));
  return shaders_.back().get();
}

SceneVideoPost* Document::AddVideoPost(const ElementClass& type) {
  auto effect = std::make_unique<SceneVideoPost>();
  if (!Init(*effect, type, *this)) return nullptr;
  video_posts_.push_back(std::move(effect));
  return video_posts_.back().get();
}

SceneVideoPost* Document::GetActiveVideoPost(std::int32_t type) const {
  for (const auto& effect : video_posts_)
    if (effect->GetType() == type) return effect.get();
  return nullptr;
}

void Document::Open() {
  const std::vector<SceneObject*> all = AllObjects();
  ModelFiles files(force);
  for (SceneObject* object : all)
    if (object->GetType() == kPolygonObject) LoadMesh(*object, *this, files);
  SetTime(GetMinTime());
  ExecutePasses(nullptr, true, true, true);
  for (SceneObject* object : all) {
    object->Message(kMessageDocumentLoaded, nullptr);
    for (const auto& tag : object->Tags()) tag->Message(kMessageDocumentLoaded, nullptr);
  }
  for (const auto& effect : video_posts_) effect->Message(kMessageDocumentLoaded, nullptr);
}

std::vector<SceneObject*> Document::AllObjects() const {
  std::vector<SceneObject*> all;
  AddWithChildren(objects_, all);
  return all;
}

std::vector<SceneObject*> Document::FindByName(const std::string& object_name) const {
  std::vector<SceneObject*> found = AllObjects();
  std::erase_if(found, [&](SceneObject* object) { return object->GetName() != object_name; });
  return found;
}

std::string Document::PlaceOf(const SceneObject& object) const {
  const SceneObject* up = object.GetUp();
  const auto& row = up ? up->Children() : objects_;
  const auto at = std::find_if(row.begin(), row.end(),
                               [&](const auto& other) { return other.get() == &object; });
  return (up ? PlaceOf(*up) + ".children[" : std::string("objects[")) +
         std::to_string(at - row.begin()) + "]";
}

}  // namespace host
