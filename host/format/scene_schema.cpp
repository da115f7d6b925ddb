#include "host/format/scene_schema.h"

#include <cmath>

#include "host/base/json_text.h"
#include "host/format/parameter_value.h"
#include "host/scene/document.h"

namespace host {
namespace {

Json Reference(const std::string& name) { return {{"$ref", "#/$defs/" + name}}; }

Json ArrayOf(Json items) { return {{"type", "array"}, {"items", std::move(items)}}; }

Json Closed(Json properties, Json required = Json::array()) {
  Json json = {
      {"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
  if (!required.empty()) json["required"] = std::move(required);
  return json;
}

Json ValueSchema(const ParameterInfo& info) {
  Json json;
  switch (info.type) {
    case ParameterType::Bool:
      return {{"type", "boolean"}};
    case ParameterType::Long:
      if (!info.cycle.empty()) {
        Json names = Json::array();
        for (const CycleEntry& entry : info.cycle) names.push_back(entry.name);
        return {{"enum", std::move(names)}};
      }
      json["type"] = "integer";
      break;
    case ParameterType::Real:
    case ParameterType::Time:
      json["type"] = "number";
      break;
    case ParameterType::Vector:
      return Reference("vector");
    case ParameterType::Curve:
      return Reference("curve");
    case ParameterType::Gradient:
      return Reference("gradient");
    case ParameterType::Links:
      return ArrayOf({{"type", "string"}});
    case ParameterType::String:
    case ParameterType::Filename:
    case ParameterType::Link:
    case ParameterType::Button:
      return {{"type", "string"}};
  }
  if (std::isfinite(info.minimum)) json["minimum"] = info.minimum;
  if (std::isfinite(info.maximum)) json["maximum"] = info.maximum;
  return json;
}

Json ParameterSchema(const ParameterInfo& info) {
  Json json = ValueSchema(info);
  json["description"] = info.help + (info.unit.empty() ? "" : " [" + info.unit + "]");
  BaseContainer data;
  data.Set(info.id, info.default_value);
  json["default"] = WriteValue(info, data, Document());
  return json;
}

/// An array of keys [frame, value], or an object with an interpolation.
Json TrackSchema(const Json& value) {
  Json keys = ArrayOf({{"type", "array"},
                       {"prefixItems", Json::array({{{"type", "number"}}, value})},
                       {"minItems", 2},
                       {"maxItems", 2}});
  keys["minItems"] = 1;
  Json with_mode =
      Closed({{"interpolation", {{"enum", {"linear", "smooth"}}}}, {"keys", keys}}, {"keys"});
  return {{"anyOf", Json::array({std::move(keys), std::move(with_mode)})}};
}

/// The name of the definition for tracks of this parameter.
const char* TrackName(const ParameterInfo& info) {
  if (info.type == ParameterType::Vector) return "vector_track";
  if (info.type == ParameterType::Bool) return "switch_track";
  return info.cycle.empty() ? "number_track" : "choice_track";
}

/// Adds "parameters" and "keyframes" of a class.
void AddBody(Json& properties, const ClassDescription& description, bool transform) {
  Json parameters = Json::object(), tracks = Json::object();
  if (transform)
    for (const char* key : {"position", "rotation", "scale"})
      tracks[key] = Reference("vector_track");
  for (const ParameterInfo& info : description.parameters) {
    if (!info.stored || !info.listed) continue;
    parameters[info.Name()] = ParameterSchema(info);
    if (info.animatable) tracks["parameters." + info.Name()] = Reference(TrackName(info));
  }
  properties["parameters"] = Closed(std::move(parameters));
  properties["keyframes"] = Closed(std::move(tracks));
}

Json Named(const ElementClass& type, bool with_type) {
  Json properties;
  if (with_type) properties["type"] = {{"const", type.description.name}};
  properties["name"] = {{"type", "string"}};
  return properties;
}

/// An element of an array: a tag, a material, a texture or a post effect.
Json ElementSchema(const ElementClass& type, bool with_type) {
  Json properties = Named(type, with_type);
  AddBody(properties, type.description, false);
  const Json index = {{"type", "integer"}, {"minimum", 0}};
  if (type.id == kSelectionTag)
    properties["polygons"] = ArrayOf({{"anyOf", Json::array({index, ArrayOf(index)})}});
  Json json = Closed(std::move(properties), with_type ? Json::array({"type"}) : Json::array());
  json["description"] = type.description.help;
  return json;
}

Json ObjectSchema(const ElementClass& type) {
  Json properties = Named(type, true);
  for (const char* key : {"enabled", "visible_in_render"}) properties[key] = {{"type", "boolean"}};
  for (const char* key : {"position", "rotation", "scale"}) properties[key] = Reference("vector");
  AddBody(properties, type.description, true);
  properties["tags"] = ArrayOf(Reference("tag"));
  properties["children"] = ArrayOf(Reference("object"));
  if (type.id == kPolygonObject) {
    properties["points"] = ArrayOf(Reference("vector"));
    properties["polygons"] = ArrayOf(ArrayOf({{"type", "integer"}, {"minimum", 0}}));
    properties["uvs"] = ArrayOf(ArrayOf(ArrayOf({{"type", "number"}})));
    properties["weights"] = ArrayOf({{"type", "number"}, {"minimum", 0}, {"maximum", 1}});
    Json shape = {{"frame", {{"type", "number"}}}, {"points", ArrayOf(Reference("vector"))}};
    properties["shapes"] = ArrayOf(Closed(std::move(shape), {"frame", "points"}));
  }
  Json json = Closed(std::move(properties), {"type"});
  json["description"] = type.description.help;
  return json;
}

template <class Make>
Json AnyOf(const ElementClasses& classes, Make make) {
  Json all = Json::array();
  for (const ElementClass& type : classes.All()) all.push_back(make(type));
  // An empty "anyOf" is not valid. Without classes no element is allowed.
  return all.empty() ? Json(false) : Json{{"anyOf", std::move(all)}};
}

Json Definitions(const SceneClasses& classes) {
  const Json number = {{"type", "number"}},
             share = {{"type", "number"}, {"minimum", 0}, {"maximum", 1}};
  const auto row = [](Json items, std::size_t count) {
    return Json{{"type", "array"},
                {"prefixItems", std::move(items)},
                {"minItems", count},
                {"maxItems", count}};
  };
  const Json vector = {{"type", "array"}, {"items", number}, {"minItems", 3}, {"maxItems", 3}};
  const Json mode = {{"enum", {"linear", "smooth"}}};
  const Json point = Closed(
      {{"x", number}, {"y", number}, {"in", mode}, {"out", mode}, {"bias", share}}, {"x", "y"});
  const Json knot = Closed({{"at", share},
                            {"color", Reference("vector")},
                            {"alpha", share},
                            {"mode", {{"enum", {"linear", "smooth", "step"}}}}},
                           {"at", "color"});
  return {
      {"vector", vector},
      {"number_track", TrackSchema(number)},
      {"vector_track", TrackSchema(Reference("vector"))},
      {"switch_track", TrackSchema({{"type", "boolean"}})},
      {"choice_track", TrackSchema({{"type", "string"}})},
      {"curve", ArrayOf({{"anyOf", Json::array({row({number, number}, 2), point})}})},
      {"gradient", ArrayOf({{"anyOf", Json::array({row({share, Reference("vector")}, 2), knot})}})},
      {"object", AnyOf(classes.objects, ObjectSchema)},
      {"tag", AnyOf(classes.tags, [](const auto& type) { return ElementSchema(type, true); })},
  };
}

Json MakeSchema(const SceneClasses& classes) {
  const auto typed = [](const ElementClasses& row) {
    return ArrayOf(AnyOf(row, [](const auto& type) { return ElementSchema(type, true); }));
  };
  const Json frame = {{"type", "integer"}, {"minimum", -10'000'000}, {"maximum", 10'000'000}};
  Json render = Json::object();
  AddBody(render, classes.render.All().front().description, false);
  Json properties = {
      {"fps",
       {{"anyOf", Json::array({{{"type", "number"}, {"minimum", 0.001}, {"maximum", 10000}},
                               {{"type", "string"}, {"pattern", "^[0-9]+(/[0-9]+|[.][0-9]+)?$"}}})},
        {"default", 25}}},
      {"start", frame},
      {"end", frame},
      {"preview_start", frame},
      {"preview_end", frame},
      {"render", Closed(std::move(render))},
      {"post_effects", typed(classes.post_effects)},
      {"materials", ArrayOf(ElementSchema(classes.materials.All().front(), false))},
      {"textures", typed(classes.shaders)},
      {"objects", ArrayOf(Reference("object"))},
  };
  Json json = Closed(std::move(properties));
  Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                 {"title", "A scene of Nimbrix"}};
  schema.update(json);
  schema["$defs"] = Definitions(classes);
  return schema;
}

}  // namespace

std::string SceneSchema(const SceneClasses& classes) {
  constexpr std::size_t kLineLength = 160;
  return JsonText(MakeSchema(classes), 1, [](const Json& json, std::size_t column) {
    std::string line = json.dump();
    return line.size() + column <= kLineLength ? line : std::string();
  });
}

}  // namespace host
