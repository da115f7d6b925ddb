#include "host/import/scene_copy.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace host {
namespace {

/// The factor by which a parameter changes in a scene of `scale` times the size.
double Factor(const ParameterInfo& info, double scale) {
  // A flame adds light along its depth, so a deeper one needs less of it.
  if (info.Name() == "fire_exposure") return scale;
  if (info.Name() == "fire_gradient_scale") return 1 / scale;
  if (info.unit.rfind("units", 0) == 0) return scale;  // also units/s, units/s^2, units/frame
  if (info.unit == "1/m") return 1 / scale;
  return info.unit == "100 units^2/s" ? scale * scale : 1;
}

}  // namespace

double Rounded(double number, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*g", digits, number);
  return std::strtod(text, nullptr);
}

Vector Rounded(const Vector& v, int digits) {
  return {Rounded(v.x, digits), Rounded(v.y, digits), Rounded(v.z, digits)};
}

void SceneCopy::CopyParameter(const ElementState& from, ElementState& to,
                              const ParameterInfo& info) const {
  const bool set = from.written.count(info.id) != 0;
  const ParameterValue* const value = from.data.Find(info.id);
  const double factor = set ? Factor(info, scale_) : 1;
  if (value) {
    to.data.Set(info.id, *value);
    if (const double* real = std::get_if<double>(value); real && factor != 1)
      to.data.SetReal(info.id, Rounded(*real * factor));
    if (const Vector* vector = std::get_if<Vector>(value); vector && factor != 1)
      to.data.SetVector(info.id, Rounded(*vector * factor));
  }
  if (set) to.written.insert(info.id);
  if (const auto track = from.tracks.find(info.id); track != from.tracks.end()) {
    Track& copy = to.tracks[info.id] = track->second;
    copy.Scale(factor);
    for (Key& key : copy.keys) key.frame += frames_;
  }
}

void SceneCopy::CopyState(const ElementState& from, ElementState& to) const {
  to.name = from.name;
  for (const ParameterInfo& info : from.type->description.parameters) CopyParameter(from, to, info);
}

SceneObject& SceneCopy::Copy(const SceneObject& object, const SceneClasses& classes) {
  SceneObject& copy = *to_.AddObject(*classes.objects.Find(object.GetType()), nullptr);
  CopyState(object.State(), copy.State());
  copy.transform = object.transform;
  copies_[&object] = &copy;
  states_.push_back(&copy.State());
  for (const auto& tag : object.Tags()) {
    SceneTag& tag_copy = *to_.AddTag(*classes.tags.Find(tag->GetType()), copy);
    CopyState(tag->State(), tag_copy.State());
    states_.push_back(&tag_copy.State());
  }
  return copy;
}

SceneMaterial& SceneCopy::Copy(const SceneMaterial& material, const SceneClasses& classes) {
  SceneMaterial& copy = *to_.AddMaterial(*classes.materials.Find(material.GetType()));
  CopyState(material.State(), copy.State());
  copies_[&material] = &copy;
  states_.push_back(&copy.State());
  return copy;
}

void SceneCopy::Relink() {
  const auto copy_of = [&](BaseList2D* element) {
    const auto found = copies_.find(element);
    return found == copies_.end() ? nullptr : found->second;
  };
  for (ElementState* state : states_)
    for (const ParameterInfo& info : state->type->description.parameters) {
      if (info.type == ParameterType::Link)
        state->data.SetLink(info.id, copy_of(state->data.GetLink(info.id)));
      if (info.type != ParameterType::Links) continue;
      LinkList links = state->data.GetLinks(info.id);
      for (BaseList2D*& link : links) link = copy_of(link);
      std::erase(links, nullptr);
      state->data.SetLinks(info.id, links);
    }
}

}  // namespace host
