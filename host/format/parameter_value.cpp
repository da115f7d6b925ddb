#include "host/format/parameter_value.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "host/base/nearest_name.h"
#include "host/format/curve_value.h"
#include "host/format/gradient_value.h"

namespace host {
namespace {

/// The frame at that time if there is one, otherwise the nearest millionth of a second.
BaseTime ReadTime(const JsonPlace& json, const FrameRate& rate) {
  const double seconds = json.Number();
  if (std::fabs(seconds) > 1e6) json.Fail("is more than a million seconds");
  const double frame = std::round(seconds * rate.Value());
  if (std::fabs(seconds * rate.Value() - frame) < 1e-6)
    return BaseTime::FromFrame(static_cast<std::int64_t>(frame), rate);
  return BaseTime::FromSeconds(seconds);
}

std::int32_t ReadCycle(const ParameterInfo& info, const JsonPlace& json) {
  const std::string name = json.Text();
  std::vector<std::string> names;
  for (const CycleEntry& entry : info.cycle) {
    if (entry.name == name) return entry.value;
    names.push_back(entry.name);
  }
  std::string all;
  for (const std::string& known : names) all += (all.empty() ? "" : ", ") + known;
  const std::string nearest = DidYouMean(name, names);
  json.Fail("unknown choice " + Quoted(name) +
            (nearest.empty() ? ", choose from " + all : nearest));
}

/// An element that a parameter can link to.
struct Linkable {
  BaseList2D* element;
  std::string place;
};

std::vector<Linkable> Linkables(const ParameterInfo& info, const Document& document) {
  std::vector<Linkable> all;
  const auto add_row = [&all](const auto& row, const std::string& key) {
    for (std::size_t i = 0; i < row.size(); ++i)
      all.push_back({row[i].get(), key + "[" + std::to_string(i) + "]"});
  };
  if (info.target == LinkTarget::Material) add_row(document.Materials(), "materials");
  if (info.target == LinkTarget::Shader) add_row(document.Shaders(), "textures");
  if (info.target != LinkTarget::Object) return all;
  for (SceneObject* object : document.AllObjects()) {
    const std::string place = document.PlaceOf(*object);
    all.push_back({object, place});
    if (info.type == ParameterType::Links) add_row(object->Tags(), place + ".tags");
  }
  return all;
}

std::string KindText(const ParameterInfo& info) {
  if (info.type == ParameterType::Links) return "object or tag";
  constexpr const char* kinds[] = {"object", "material", "texture"};  // in the order of LinkTarget
  return kinds[static_cast<std::size_t>(info.target)];
}

/// Finds the element by its name, or by its place if several have that name.
BaseList2D* ReadLink(const ParameterInfo& info, const JsonPlace& json, const Document& document) {
  const std::string name = json.Text(), kind = KindText(info);
  const std::vector<Linkable> all = Linkables(info, document);
  std::vector<Linkable> found;
  std::vector<std::string> names;
  for (const Linkable& one : all) {
    names.push_back(one.element->GetName());
    if (names.back() == name) found.push_back(one);
  }
  if (found.size() == 1) return found.front().element;
  if (found.size() > 1)
    json.Fail("several " + kind + "s are named " + Quoted(name) +
              "; use its place instead, such as " + Quoted(found.front().place));
  for (const Linkable& one : all)
    if (one.place == name) return one.element;
  json.Fail("no " + kind + " is named " + Quoted(name) + DidYouMean(name, names));
}

Json WriteLink(const ParameterInfo& info, const BaseList2D* element, const Document& document) {
  if (!element) return "";
  const std::vector<Linkable> all = Linkables(info, document);
  const std::string name = element->GetName();
  const bool unique = std::count_if(all.begin(), all.end(), [&](const Linkable& one) {
                        return one.element->GetName() == name;
                      }) == 1;
  for (const Linkable& one : all)
    if (one.element == element) return unique ? name : one.place;
  return "";
}

LinkList ReadLinks(const ParameterInfo& info, const JsonPlace& json, const Document& document) {
  json.ExpectArray();
  LinkList list;
  for (std::size_t i = 0; i < json.Size(); ++i)
    list.push_back(ReadLink(info, json.At(i), document));
  return list;
}

Json WriteLinks(const ParameterInfo& info, const LinkList& list, const Document& document) {
  Json json = Json::array();
  for (const BaseList2D* element : list) json.push_back(WriteLink(info, element, document));
  return json;
}

ParameterValue ReadAny(const ParameterInfo& info, const JsonPlace& json, const Document& document) {
  switch (info.type) {
    case ParameterType::Bool:
      return json.Bool();
    case ParameterType::Long:
      if (!info.cycle.empty()) return ReadCycle(info, json);
      return json.Whole(std::numeric_limits<std::int32_t>::min(),
                        std::numeric_limits<std::int32_t>::max());
    case ParameterType::Real:
      return json.Number();
    case ParameterType::Vector:
      return json.VectorValue();
    case ParameterType::Time:
      return ReadTime(json, document.fps);
    case ParameterType::String:
      return json.Text();
    case ParameterType::Filename:
      return Filename{json.Text()};
    case ParameterType::Curve:
      return ReadCurve(json);
    case ParameterType::Gradient:
      return ReadGradient(json);
    case ParameterType::Links:
      return ReadLinks(info, json, document);
    case ParameterType::Link:
      if (json.Text().empty()) return static_cast<BaseList2D*>(nullptr);
      return ReadLink(info, json, document);
    case ParameterType::Button:
      break;
  }
  json.Fail("a button has no value");
}

/// Clamps a number to the bounds of its parameter.
double Bounded(const ParameterInfo& info, double number, const JsonPlace& json,
               Document& document) {
  const double bounded = std::clamp(number, info.minimum, info.maximum);
  if (bounded != number) {
    std::ostringstream text;
    text.precision(10);
    text << json.Place() << ": " << number << (number < bounded ? " is below " : " is above ")
         << bounded << ", which is used instead";
    document.warnings.push_back(text.str());
  }
  return bounded;
}

}  // namespace

ParameterValue ReadValue(const ParameterInfo& info, const JsonPlace& json, Document& document) {
  ParameterValue value = ReadAny(info, json, document);
  const auto bounded = [&](double number) { return Bounded(info, number, json, document); };
  if (auto* real = std::get_if<double>(&value)) *real = bounded(*real);
  if (auto* number = std::get_if<std::int32_t>(&value))
    *number = static_cast<std::int32_t>(bounded(*number));
  if (auto* v = std::get_if<Vector>(&value)) *v = {bounded(v->x), bounded(v->y), bounded(v->z)};
  return value;
}

Json WriteVector(const Vector& vector) { return Json::array({vector.x, vector.y, vector.z}); }

Json WriteValue(const ParameterInfo& info, const BaseContainer& data, const Document& document) {
  switch (info.type) {
    case ParameterType::Bool:
      return data.GetBool(info.id);
    case ParameterType::Long: {
      const std::int32_t number = data.GetLong(info.id);
      for (const CycleEntry& entry : info.cycle)
        if (entry.value == number) return entry.name;
      return number;
    }
    case ParameterType::Real:
      return data.GetReal(info.id);
    case ParameterType::Vector:
      return WriteVector(data.GetVector(info.id));
    case ParameterType::Time:
      return data.GetTime(info.id).Get();
    case ParameterType::String:
      return data.GetString(info.id);
    case ParameterType::Filename:
      return data.GetFilename(info.id).path;
    case ParameterType::Curve:
      return WriteCurve(data.GetCurve(info.id));
    case ParameterType::Gradient:
      return WriteGradient(data.GetGradient(info.id));
    case ParameterType::Links:
      return WriteLinks(info, data.GetLinks(info.id), document);
    case ParameterType::Link:
      return WriteLink(info, data.GetLink(info.id), document);
    case ParameterType::Button:
      break;
  }
  return nullptr;
}

}  // namespace host
