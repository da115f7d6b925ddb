#include "host/format/overrides.h"

#include <filesystem>

#include "host/base/document_error.h"
#include "host/base/json_place.h"
#include "host/base/nearest_name.h"
#include "host/format/parameter_value.h"
#include "host/format/scene_hints.h"

namespace host {
namespace {

struct Setting {
  std::string object, parameter, value;
};

Setting Split(const std::string& text, const std::string& place) {
  const std::size_t equals = text.find('=');
  // Names of objects may contain dots, names of parameters don't.
  const std::size_t point =
      equals == std::string::npos ? equals : text.substr(0, equals).rfind('.');
  if (point == std::string::npos || point == 0 || point + 1 == equals) {
    // The name alone is meant for everything that has the parameter.
    const bool has_name = point == std::string::npos && equals != point && equals > 0;
    throw DocumentError(place, "expected OBJECT.parameter=VALUE" +
                                   (has_name ? ", such as '*." + text + "'" : std::string()));
  }
  return {text.substr(0, point), text.substr(point + 1, equals - point - 1),
          text.substr(equals + 1)};
}

/// Null if the text isn't a bool.
Json BoolToJson(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  for (const char* on : {"true", "on", "yes", "1"})
    if (text == on) return true;
  for (const char* off : {"false", "off", "no", "0"})
    if (text == off) return false;
  return nullptr;
}

Json ToJson(const ParameterInfo& info, const std::string& text) {
  if (info.type == ParameterType::Bool)
    if (Json json = BoolToJson(text); !json.is_null()) return json;
  const bool is_text = info.type == ParameterType::String || info.type == ParameterType::Filename ||
                       info.type == ParameterType::Link || !info.cycle.empty();
  if (is_text) return text;
  if (info.type == ParameterType::Vector && text.rfind('[', 0) != 0)
    return ToJson(info, "[" + text + "]");
  try {
    return ParseJson(text);
  } catch (const DocumentError&) {
    return text;  // wrong type; the reader reports the expected type
  }
}

/// Sets the parameter. False if the element doesn't have it.
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

/// The elements that one name can set: an element, and its tags for parameters that it lacks.
using Settable = std::vector<ElementState*>;

bool Apply(const Settable& settable, const Setting& setting, const std::string& place,
           Document& document) {
  if (Apply(*settable.front(), setting, place, document)) return true;
  bool found = false;
  for (std::size_t i = 1; i < settable.size(); ++i)
    found = Apply(*settable[i], setting, place, document) || found;
  return found;
}

/// Objects with their tags, materials, textures, post effects, and the render settings (named after
/// their type).
std::vector<Settable> AllSettable(Document& document) {
  std::vector<Settable> all;
  for (SceneObject* object : document.AllObjects()) {
    all.push_back({&object->State()});
    for (const auto& tag : object->Tags()) all.back().push_back(&tag->State());
  }
  for (const auto& material : document.Materials()) all.push_back({&material->State()});
  for (const auto& shader : document.Shaders()) all.push_back({&shader->State()});
  for (const auto& effect : document.VideoPosts()) all.push_back({&effect->State()});
  all.push_back({&document.GetActiveRenderData().State()});
  return all;
}

std::vector<std::string> ParameterNames(const std::vector<Settable>& elements) {
  std::vector<std::string> names;
  for (const Settable& settable : elements)
    for (const ElementState* element : settable)
      for (const std::string& name : element->type->description.Names()) names.push_back(name);
  return names;
}

/// The hints of the first element that has one for the name.
Hints HintsFor(const std::string& name, const std::vector<Settable>& elements) {
  for (const Settable& settable : elements)
    for (const ElementState* element : settable) {
      const Hints hints = SceneHints(element->type->description.name);
      if (!FindHint(name, hints).empty()) return hints;
    }
  return SceneHints("--set");
}

void ApplyOne(Document& document, const std::string& text) {
  const std::string place = "--set " + text;
  const Setting setting = Split(text, place);
  const bool all = setting.object == "*";
  std::vector<Settable> elements = AllSettable(document);
  std::vector<std::string> names;
  for (const Settable& settable : elements) names.push_back(settable.front()->name);
  if (!all)
    std::erase_if(elements, [&](const Settable& s) { return s.front()->name != setting.object; });
  if (elements.empty())
    throw DocumentError(
        place, "no object is named " + Quoted(setting.object) + DidYouMean(setting.object, names));
  bool found = false;
  for (const Settable& settable : elements)
    found = Apply(settable, setting, place, document) || found;
  if (!found)
    throw DocumentError(place, "unknown parameter " + Quoted(setting.parameter) +
                                   DidYouMean(setting.parameter, ParameterNames(elements),
                                              HintsFor(setting.parameter, elements)));
}

}  // namespace

void ApplyOverrides(Document& document, const std::vector<std::string>& settings) {
  for (const std::string& setting : settings) ApplyOne(document, setting);
}

}  // namespace host
