#include "host/import/model_roles.h"

#include <cmath>
#include <string>
#include <utility>

#include "host/base/nearest_name.h"
#include "host/format/parameter_value.h"

namespace host {
namespace {

const Json kNothing = Json::object();

/// True if the file comes from a z-up program whose exporter rotates the scene but not the numbers
/// in extras.
bool HasExtrasWithZUp(const ModelFile& file) {
  static const Json::json_pointer place("/asset/generator");
  const Json& json = file.Gltf();
  const bool has_generator = json.contains(place) && json.at(place).is_string();
  return has_generator && json.at(place).get<std::string>().find("Blender") != std::string::npos;
}

/// Converts a value to the form used in documents. Modeling programs may lack bools, and may write
/// integers as floats.
Json AsInDocuments(const ParameterInfo& info, const Json& value) {
  if (info.type == ParameterType::Bool && value.is_number_integer()) return value != 0;
  const bool whole = info.type == ParameterType::Long && value.is_number_float() &&
                     std::floor(value.get<double>()) == value.get<double>() &&
                     std::fabs(value.get<double>()) < 1e9;
  return whole ? Json(value.get<std::int64_t>()) : value;
}

}  // namespace

NodeRoles ReadRoles(const ModelFile& file, const aiNode& node, const SceneClasses& classes) {
  NodeRoles roles{nullptr, JsonPlace(kNothing, ""), {}};
  const int index = file.GltfIndex(node);
  if (index < 0) return roles;
  const Json& json = file.Gltf().at("nodes").at(index);
  static const Json::json_pointer path("/extras/nimbrix");
  if (!json.contains(path)) return roles;
  const JsonPlace all(json.at(path), "nodes[" + std::to_string(index) + "].extras.nimbrix");
  all.ExpectObject();
  for (const auto& [name, value] : all.Value().items()) {
    if (const ElementClass* type = classes.tags.Find(name)) {
      roles.tags.emplace_back(type, all.At(name));
      continue;
    }
    const ElementClass* type = classes.objects.Find(name);
    if (!type) {
      std::vector<std::string> known = classes.objects.Names();
      for (const std::string& tag : classes.tags.Names()) known.push_back(tag);
      all.Fail("unknown type " + Quoted(name) + DidYouMean(name, known));
    }
    if (roles.object) all.Fail("a node can only be one object; remove one of its types");
    roles.object = type;
    roles.object_parameters = all.At(name);
  }
  return roles;
}

void ApplyRole(ElementState& element, const JsonPlace& parameters, const ModelFile& file,
               Document& document) {
  const ClassDescription& description = element.type->description;
  std::vector<std::string> names;
  for (const ParameterInfo& info : description.parameters) names.push_back(info.Name());
  parameters.ExpectKeys(names, "parameter");
  for (const auto& [key, value] : parameters.Value().items()) {
    const ParameterInfo& info = *description.Find(key);
    const Json json = AsInDocuments(info, value);
    ParameterValue read = ReadValue(info, {json, parameters.At(key).Place()}, document);
    // (x, y, z) with z up is (x, z, -y) with y up, and z is negated again. Colors have no unit.
    auto* v = std::get_if<Vector>(&read);
    if (v && !info.unit.empty() && HasExtrasWithZUp(file)) std::swap(v->y, v->z);
    element.data.Set(info.id, read);
    element.written.insert(info.id);
  }
}

}  // namespace host
