#include "host/import/model_stage.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "host/base/document_error.h"
#include "host/import/scene_box.h"
#include "host/import/scene_copy.h"
#include "host/interface/camera.h"
#include "host/scene/builtin_classes.h"

namespace host {
namespace {

constexpr double kMostVoxels = 1e6;
/// Room for the gas on each side of the meshes and above them, in lengths of their longest edge.
constexpr double kRoomAside = 0.75, kRoomAbove = 2;
/// Gas that expands to more than twice its volume, as in an explosion, needs more.
constexpr double kExpansion = 1, kExplosionAside = 1.5, kExplosionAbove = 3;
constexpr double kCameraPitch = 4;  ///< degrees, downward

/// The parameter of a class of the plug-in. The host knows it only by name.
const ParameterInfo& Find(const ElementState& element, const std::string& name) {
  for (const ParameterInfo& info : element.type->description.parameters)
    if (info.Name() == name) return info;
  throw DocumentError("a " + element.type->description.name + " has no parameter " + name);
}

void SetReal(ElementState& element, const std::string& name, double value) {
  const std::int32_t id = Find(element, name).id;
  element.data.SetReal(id, value);
  element.written.insert(id);
}

void SetVector(ElementState& element, const std::string& name, const Vector& value) {
  const std::int32_t id = Find(element, name).id;
  element.data.SetVector(id, value);
  element.written.insert(id);
}

std::vector<SceneObject*> OfType(const Document& document, std::int32_t type) {
  std::vector<SceneObject*> found = document.AllObjects();
  std::erase_if(found, [&](const SceneObject* object) { return object->GetType() != type; });
  return found;
}

std::vector<SceneTag*> TagsOfType(const Document& document, std::int32_t type) {
  std::vector<SceneTag*> found;
  for (const SceneObject* object : document.AllObjects())
    for (const auto& tag : object->Tags())
      if (tag->GetType() == type) found.push_back(tag.get());
  return found;
}

/// The box that a volume object simulates.
SceneBox BoxOf(const SceneObject& volume) {
  const Vector size = volume.State().data.GetVector(Find(volume.State(), "size").id);
  SceneBox box;
  for (int corner = 0; corner < 8; ++corner)
    box.Add(volume.GetMg() * Vector{corner & 1 ? size.x / 2 : -size.x / 2,
                                    corner & 2 ? size.y / 2 : -size.y / 2,
                                    corner & 4 ? size.z / 2 : -size.z / 2});
  return box;
}

/// Rounded down to whole steps.
Vector OnSteps(const Vector& v, double step) {
  return Rounded(
      {std::floor(v.x / step) * step, std::floor(v.y / step) * step, std::floor(v.z / step) * step},
      6);
}

class Stage {
 public:
  Stage(Document& model, const Document& start, const SceneClasses& classes)
      : model_(model),
        start_(start),
        classes_(classes),
        volume_(*classes.objects.Find("volume")),
        emitter_(*classes.tags.Find("emitter")),
        start_volume_(*OfType(start, volume_.id).at(0)),
        start_box_(BoxOf(start_volume_)) {}

  void Set() {
    const std::vector<SceneObject*> volumes = OfType(model_, volume_.id);
    const bool animated = IsAnimated(model_);
    meshes_ = MeshBox(model_, animated);
    if (meshes_.IsEmpty() && volumes.empty())
      throw DocumentError("the model has no mesh that could emit gas");
    if (!animated) TakeRange();
    domain_ = volumes.empty() ? NewDomain() : BoxOf(*volumes.front());
    if (meshes_.IsEmpty()) meshes_ = domain_;
    SceneCopy copy(model_, domain_.Size().y / start_box_.Size().y, model_.start - start_.start);
    TakePicture();
    if (volumes.empty()) AddVolume(copy);
    if (TagsOfType(model_, emitter_.id).empty()) AddEmitters(copy);
    if (OfType(model_, kLightObject).empty()) AddLights(copy);
    AddGround(copy);
    if (OfType(model_, kCameraObject).empty()) AddCamera(copy);
    copy.Relink();
  }

 private:
  SceneBox NewDomain() const {
    const ElementState& gas = start_volume_.State();
    const bool bursts = gas.data.GetReal(Find(gas, "fuel_to_expansion").id) > kExpansion;
    const Vector size = meshes_.Size();
    const double edge = std::max({size.x, size.y, size.z});
    const double aside = edge * (bursts ? kExplosionAside : kRoomAside);
    const double above = edge * (bursts ? kExplosionAbove : kRoomAbove);
    SceneBox box;
    box.Add(meshes_.low - Vector{aside, 0, aside});
    box.Add(meshes_.high + Vector{aside, above, aside});
    const double step = std::pow(10, std::floor(std::log10(edge)) - 2);
    return {OnSteps(box.low, step), OnSteps(box.high, step)};
  }

  void TakeRange() {
    model_.start = model_.preview_start = start_.start;
    model_.end = model_.preview_end = start_.end;
  }

  /// A model with a camera keeps the size of its picture.
  void TakePicture() {
    ElementState& render = model_.GetActiveRenderData().State();
    const BaseContainer& start = start_.GetActiveRenderData().State().data;
    const bool framed = !OfType(model_, kCameraObject).empty();
    for (const ParameterInfo& info : render.type->description.parameters)
      if (info.type != ParameterType::Link &&
          !(framed && (info.id == RENDER_WIDTH || info.id == RENDER_HEIGHT)))
        render.data.Set(info.id, *start.Find(info.id));
  }

  void AddVolume(SceneCopy& copy) {
    SceneObject& volume = copy.Copy(start_volume_, classes_);
    const Vector size = Rounded(domain_.Size(), 6);
    const double voxel = std::cbrt(size.x * size.y * size.z / (0.9 * kMostVoxels));
    SetVector(volume.State(), "size", size);
    SetReal(volume.State(), "voxel_size", Rounded(voxel));
    volume.transform.position = Rounded(domain_.Center(), 6);
  }

  /// Each mesh gets the amounts of the pattern's source. A tag also covers the meshes below it.
  void AddEmitters(const SceneCopy& copy) {
    const ElementState& source = Source();
    for (SceneObject* mesh : OfType(model_, kPolygonObject)) {
      const SceneObject* up = mesh->GetUp();
      while (up && up->GetType() != kPolygonObject) up = up->GetUp();
      if (up) continue;
      ElementState& tag = model_.AddTag(emitter_, *mesh)->State();
      for (const char* name : kAmounts) {
        copy.CopyParameter(source, tag, Find(source, name));
        copy.CopyParameter(source, tag, Find(source, std::string(name) + "_mode"));
      }
    }
  }

  /// The first tag of the pattern that emits something.
  const ElementState& Source() const {
    for (const SceneTag* tag : TagsOfType(start_, emitter_.id))
      for (const char* name : kAmounts) {
        const ParameterInfo& info = Find(tag->State(), name);
        if (tag->IsAnimated(info.id) || tag->State().data.GetReal(info.id) > 0) return tag->State();
      }
    throw DocumentError("the starting scene emits nothing");
  }

  /// The place in the model's scene of a point in the pattern.
  Vector Moved(const Vector& point) const {
    const double scale = domain_.Size().y / start_box_.Size().y;
    return Rounded((point - start_box_.Foot()) * scale + domain_.Foot());
  }

  void AddLights(SceneCopy& copy) {
    for (const SceneObject* light : OfType(start_, kLightObject)) {
      SceneObject& added = copy.Copy(*light, classes_);
      added.transform.position = Moved(light->transform.position);
    }
  }

  void AddGround(SceneCopy& copy) {
    const std::vector<SceneObject*> grounds = OfType(start_, kPlaneObject);
    if (grounds.empty()) return;
    for (const auto& material : start_.Materials())
      if (material->GetName() == grounds.front()->GetName()) copy.Copy(*material, classes_);
    SceneObject& ground = copy.Copy(*grounds.front(), classes_);
    const double below = 0.001 * meshes_.Size().y;  // a floor of the model stays visible
    ground.transform.position = Rounded(domain_.Foot() - Vector{0, below, 0}, 6);
  }

  /// The whole domain fits into the picture.
  void AddCamera(SceneCopy& copy) {
    SceneObject& camera = copy.Copy(*OfType(start_, kCameraObject).at(0), classes_);
    const BaseContainer& render = model_.GetActiveRenderData().State().data;
    const double angle = camera.State().data.GetReal(CAMERA_FIELD_OF_VIEW) * kDegree;
    const double across = std::tan(angle / 2);
    const double up = across * render.GetLong(RENDER_HEIGHT) / render.GetLong(RENDER_WIDTH);
    const Vector half = domain_.Size() * 0.5;
    const double distance = 1.05 * std::max(half.x / across, half.y / up) + half.z;
    camera.transform.position = Rounded(
        domain_.Center() + Vector{0, distance * std::tan(kCameraPitch * kDegree), -distance}, 6);
    camera.transform.rotation = {0, kCameraPitch, 0};
    SetReal(camera.State(), "near", Rounded(std::min(5.0, distance / 100)));
  }

  static constexpr const char* kAmounts[] = {"density", "temperature", "fuel", "burn"};
  static constexpr double kDegree = std::numbers::pi / 180;

  Document& model_;
  const Document& start_;
  const SceneClasses& classes_;
  const ElementClass& volume_;
  const ElementClass& emitter_;
  const SceneObject& start_volume_;
  SceneBox start_box_, meshes_, domain_;
};

}  // namespace

void SetStage(Document& model, const Document& start, const SceneClasses& classes) {
  Stage(model, start, classes).Set();
}

}  // namespace host
