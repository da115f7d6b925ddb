#include "host/program/describe_command.h"

#include <cmath>
#include <sstream>

#include "host/base/json_place.h"
#include "host/base/nearest_name.h"
#include "host/format/parameter_value.h"
#include "host/format/scene_hints.h"
#include "host/format/scene_schema.h"

namespace host {
namespace {

std::string TypeText(const ParameterInfo& info) {
  if (!info.cycle.empty()) {
    std::string names;
    for (const CycleEntry& entry : info.cycle) names += (names.empty() ? "" : "|") + entry.name;
    return names;
  }
  switch (info.type) {
    case ParameterType::Bool:
      return "true|false";
    case ParameterType::Long:
      return "whole number";
    case ParameterType::Real:
      return "number";
    case ParameterType::Vector:
      return "[x, y, z]";
    case ParameterType::Time:
      return "seconds";
    case ParameterType::String:
      return "text";
    case ParameterType::Filename:
      return "file name";
    case ParameterType::Curve:
      return "[[x, y], ...]";
    case ParameterType::Gradient:
      return "[[position, [r, g, b]], ...]";
    case ParameterType::Links:
      return "[name, ...]";
    case ParameterType::Button:
      return "button";
    case ParameterType::Link:
      break;
  }
  return info.target == LinkTarget::Object     ? "name of an object"
         : info.target == LinkTarget::Material ? "name of a material"
                                               : "name of a texture";
}

std::string DefaultText(const ParameterInfo& info) {
  BaseContainer data;
  data.Set(info.id, info.default_value);
  return WriteValue(info, data, Document()).dump();
}

std::string BoundsText(const ParameterInfo& info) {
  std::ostringstream text;
  if (std::isfinite(info.minimum)) text << ", from " << info.minimum;
  if (std::isfinite(info.maximum)) text << ", up to " << info.maximum;
  return text.str();
}

void Describe(const ElementClass& type, const ParameterInfo& info, CommandContext& context) {
  const std::string bounds = BoundsText(info), default_text = DefaultText(info);
  context.Result("  " + info.Name() + ": " + TypeText(info) +
                 (info.unit.empty() ? "" : ", " + info.unit) + bounds + ", default " +
                 default_text + (info.animatable ? "" : ", no keyframes") +
                 (info.stored ? "" : ", shown only"));
  if (!info.help.empty()) context.Result("      " + info.help);
  context.Event("parameter", {{"type", type.description.name},
                              {"name", info.Name()},
                              {"values", TypeText(info)},
                              {"unit", info.unit},
                              {"minimum", info.minimum},
                              {"maximum", info.maximum},
                              {"default", default_text},
                              {"animatable", info.animatable},
                              {"help", info.help}});
}

void DescribeHead(const ElementClass& type, const char* kind, CommandContext& context) {
  const ClassDescription& description = type.description;
  context.Result(std::string(kind) + " \"" + description.name + "\": " + description.help);
  context.Event("type", {{"kind", kind}, {"name", description.name}, {"help", description.help}});
}

void Describe(const ElementClass& type, const char* kind, CommandContext& context) {
  DescribeHead(type, kind, context);
  for (const ParameterInfo& info : type.description.parameters)
    if (info.listed) Describe(type, info, context);
}

/// Calls body(type, kind) for all types in the order of the list.
template <class Body>
void EachType(const SceneClasses& classes, Body body) {
  const auto each = [&body](const ElementClasses& row, const char* kind) {
    for (const ElementClass& type : row.All()) body(type, kind);
  };
  each(classes.objects, "object");
  each(classes.tags, "tag");
  each(classes.post_effects, "post effect");
  each(classes.materials, "material");
  each(classes.shaders, "texture");
  each(classes.render, "render");
  each(classes.preferences, "preferences");
}

}  // namespace

void DescribeAll(const ElementClasses& classes, const char* kind, CommandContext& context) {
  for (const ElementClass& type : classes.All()) Describe(type, kind, context);
}

bool DescribeParameter(const SceneClasses& classes, const std::string& name,
                       CommandContext& context) {
  bool found = false;
  EachType(classes, [&](const ElementClass& type, const char* kind) {
    for (const ParameterInfo& info : type.description.parameters) {
      if (!info.listed || info.Name() != name) continue;
      DescribeHead(type, kind, context);
      Describe(type, info, context);
      found = true;
    }
  });
  return found;
}

std::vector<std::string> TypeNames(const SceneClasses& classes) {
  std::vector<std::string> names;
  EachType(classes,
           [&](const ElementClass& type, const char*) { names.push_back(type.description.name); });
  return names;
}

CommandInfo DescribeCommand::GetInfo() const {
  return {.verb = "describe",
          .help = "Lists the types that a scene can contain, with their parameters",
          .options = {{.name = "TYPE",
                       .value_name = "TYPE",
                       .help = "Type of an object, tag, material or texture; default: all",
                       .positional = true},
                      {.name = "schema",
                       .type = OptionType::Flag,
                       .help = "Prints a JSON schema of scenes instead"}}};
}

int DescribeCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  if (arguments.Has("schema")) {
    context.Result(SceneSchema(classes_));
    return kDone;
  }
  const std::string name = arguments.GetString("TYPE");
  bool found = false;
  EachType(classes_, [&](const ElementClass& type, const char* kind) {
    if (!name.empty() && type.description.name != name) return;
    Describe(type, kind, context);
    found = true;
  });
  if (found) return kDone;
  const std::string hint = TypeHint(name, "object", classes_);
  context.Error("unknown type " + Quoted(name) +
                (hint.empty() ? DidYouMean(name, TypeNames(classes_)) : hint));
  return kBadInput;
}

}  // namespace host
