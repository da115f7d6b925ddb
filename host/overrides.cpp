#include "host/overrides.h"

#include <filesystem>

#include "host/document_error.h"
#include "host/json_place.h"
#include "host/nearest_name.h"
#include "host/parameter_value.h"

namespace host {
namespace {

struct Setting {
  std::string object, parameter, value;
};

Setting Split(const std::string& text, const std::string& place) {
  const std::size_t equals = text.find('=');
  // Names of objects may hold points; those of parameters don't.
  const std::size_t point =
      equals == std::string::npos ? equals : text.substr(0, equals).rfind('.');
  if (point == std::string::npos || point == 0 || point + 1 == equals)
    throw DocumentError(place, "expected OBJECT.parameter=VALUE");
  return {text.substr(0, point), text.substr(point + 1, equals - point - 1),
          text.substr(equals + 1)};
}

Json ToJson(const ParameterInfo& info, const std::string& text) {
  const bool is_text = info.type == ParameterType::String || info.type == ParameterType::Filename ||
                       info.type == ParameterType::Link || !info.cycle.empty();
  if (is_text) return text;
  if (info.type == ParameterType::Vector && text.rfind('[', 0) != 0)
    return ToJson(info, "[" + text + "]");
  try {
    return ParseJson(text);
  } catch (const DocumentError&) {
    return text;  // of the wrong kind, which the reader tells with the kind that it expects
  }
}

/// True if the element has the parameter.
bool Apply(ElementState& element, const Setting& setting, const std::string& place,
           Document& document) {
  const ParameterInfo* info = element.type->description.Find(setting.parameter);
  if (!info) return false;
  ParameterValue value = ReadValue(*info, {ToJson(*info, setting.value), place}, document);
  if (auto* file = std::get_if<Filename>(&value); file && !file->path.empty())
    file->path = std::filesystem::absolute(file->path).lexically_normal().string();
  element.data.Set(info->id, value);
  element.written.insert(info->id);
  element.tracks.erase(info->id);
  return true;
}

bool Apply(SceneObject& object, const Setting& setting, const std::string& place,
           Document& document) {
  if (Apply(object.State(), setting, place, document)) return true;
  bool found = false;
  for (const auto& tag : object.Tags())
    found = Apply(tag->State(), setting, place, document) || found;
  return found;
}

std::vector<std::string> ParameterNames(const std::vector<SceneObject*>& objects) {
  std::vector<std::string> names;
  const auto add = [&names](const ElementState& element) {
    for (const ParameterInfo& info : element.type->description.parameters)
      names.push_back(info.Name());
  };
  for (const SceneObject* object : objects) {
    add(object->State());
    for (const auto& tag : object->Tags()) add(tag->State());
  }
  return names;
}

void ApplyOne(Document& document, const std::string& text) {
  const std::string place = "--set " + text;
  const Setting setting = Split(text, place);
  const bool all = setting.object == "*";
  const std::vector<SceneObject*> objects =
      all ? document.AllObjects() : document.FindByName(setting.object);
  if (objects.empty() && !all) {
    std::vector<std::string> names;
    for (const SceneObject* object : document.AllObjects()) names.push_back(object->GetName());
    throw DocumentError(
        place, "no object is named " + Quoted(setting.object) + DidYouMean(setting.object, names));
  }
  bool found = false;
  for (SceneObject* object : objects) found = Apply(*object, setting, place, document) || found;
  if (!found)
    throw DocumentError(place, "unknown parameter " + Quoted(setting.parameter) +
                                   DidYouMean(setting.parameter, ParameterNames(objects)));
}

}  // namespace

void ApplyOverrides(Document& document, const std::vector<std::string>& settings) {
  for (const std::string& setting : settings) ApplyOne(document, setting);
}

}  // namespace host
