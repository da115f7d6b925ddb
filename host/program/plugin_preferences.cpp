#include "host/program/plugin_preferences.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/base/document_error.h"
#include "host/base/json_place.h"
#include "host/base/whole_file.h"

namespace host {
namespace {

/// Stores bools, numbers, texts and paths. Other types are not kept.
void Put(Json& json, std::int32_t id, const ParameterValue& value) {
  const std::string key = std::to_string(id);
  if (const auto* b = std::get_if<bool>(&value)) json[key] = *b;
  if (const auto* n = std::get_if<std::int32_t>(&value)) json[key] = *n;
  if (const auto* r = std::get_if<double>(&value)) json[key] = *r;
  if (const auto* s = std::get_if<std::string>(&value)) json[key] = *s;
  if (const auto* f = std::get_if<Filename>(&value)) json[key] = {{"path", f->path}};
}

ParameterValue Get(const JsonPlace& json) {
  const Json& value = json.Value();
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_number_float()) return json.Number();
  if (value.is_number()) return json.Whole(-2147483647 - 1, 2147483647);
  if (value.is_object()) return Filename{json.At("path").Text()};
  return json.Text();
}

std::int32_t Id(const JsonPlace& json, const std::string& text) {
  std::int32_t id = 0;
  const char* const end = text.data() + text.size();
  if (std::from_chars(text.data(), end, id).ptr != end || text.empty())
    json.Fail("\"" + text + "\" isn't an id");
  return id;
}

}  // namespace

void PluginPreferences::Open(const std::string& path) {
  path_ = path;
  containers_.clear();
  std::ifstream file(path, std::ios::binary);
  if (!file) return;
  try {
    const Json json = ParseJson(std::string(std::istreambuf_iterator<char>(file), {}));
    const JsonPlace all(json, "");
    all.ExpectObject();
    for (const auto& [plugin, values] : json.items()) {
      BaseContainer& data = containers_[Id(all, plugin)];
      const JsonPlace place = all.At(plugin);
      place.ExpectObject();
      for (const auto& [id, value] : values.items()) data.Set(Id(place, id), Get(place.At(id)));
    }
  } catch (const DocumentError& error) {
    throw DocumentError(path, std::string(error.what()) + "; repair the file or remove it");
  }
}

const BaseContainer* PluginPreferences::Find(std::int32_t id) const {
  const auto found = containers_.find(id);
  return found == containers_.end() ? nullptr : &found->second;
}

bool PluginPreferences::Set(std::int32_t id, const BaseContainer& data) {
  containers_[id] = data;
  return path_.empty() || Write();
}

bool PluginPreferences::Write() const {
  Json json = Json::object();
  for (const auto& [plugin, data] : containers_) {
    Json& values = json[std::to_string(plugin)] = Json::object();
    for (const auto& [id, value] : data.Values()) Put(values, id, value);
  }
  try {
    const WholeFile file(path_);
    file.MakeFolder();
    file.Write(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    file.Commit();
    return true;
  } catch (const std::filesystem::filesystem_error&) {
    return false;
  }
}

}  // namespace host
