#include "host/format/document_writer.h"

#include <algorithm>
#include <filesystem>

#include "host/base/document_error.h"
#include "host/base/json_text.h"
#include "host/base/whole_file.h"
#include "host/format/keyframe_text.h"
#include "host/format/mesh_text.h"
#include "host/format/parameter_value.h"

namespace host {
namespace {

class DocumentWriter {
 public:
  DocumentWriter(const Document& document, bool moved) : document_(document), moved_(moved) {}

  Json Write() const {
    const Document& d = document_;
    Json json = {{"fps", WriteRate(d)}, {"start", d.start}, {"end", d.end}};
    if (d.preview_start != d.start) json["preview_start"] = d.preview_start;
    if (d.preview_end != d.end) json["preview_end"] = d.preview_end;
    const SceneRender& render = d.GetActiveRenderData();
    AddIfFilled(json, "render", WriteBody(render.State(), Json::object()));
    Json materials = Json::array(), textures = Json::array();
    for (const auto& material : d.Materials())
      materials.push_back(WriteBody(material->State(), WriteName(material->State())));
    for (const auto& shader : d.Shaders())
      textures.push_back(WriteBody(shader->State(), WriteHead(shader->State())));
    Json effects = Json::array();
    for (const auto& effect : d.VideoPosts()) {
      Json body = WriteEffect(*effect);
      if (body.size() > 1) effects.push_back(std::move(body));  // more than the type
    }
    AddIfFilled(json, "materials", std::move(materials));
    AddIfFilled(json, "textures", std::move(textures));
    AddIfFilled(json, "post_effects", std::move(effects));
    json["objects"] = WriteRow(d.Objects());
    return json;
  }

  /// All comments, with the paths that their values have in the text of Write.
  std::vector<JsonComment> Comments() const {
    std::vector<JsonComment> all = document_.comments;
    AddComments(document_.GetActiveRenderData().State(), "/render", all);
    AddRow(document_.Materials(), "/materials", all);
    AddRow(document_.Shaders(), "/textures", all);
    std::size_t index = 0;
    for (const auto& effect : document_.VideoPosts()) {
      const bool is_written = WriteEffect(*effect).size() > 1;
      AddComments(effect->State(),
                  "/post_effects/" + (is_written ? std::to_string(index++) : "none"), all);
    }
    AddObjects(document_.Objects(), "/objects", all);
    return all;
  }

 private:
  /// Keeps the form in which the rate was read.
  static Json WriteRate(const Document& d) {
    if (!d.fps_text.empty()) return Json::parse(d.fps_text);
    return d.fps.IsWhole() ? Json(d.fps.Numerator()) : Json(d.fps.Text());
  }

  Json WriteRow(const std::vector<std::unique_ptr<SceneObject>>& row) const {
    Json json = Json::array();
    for (const auto& object : row) json.push_back(WriteObject(*object));
    return json;
  }

  Json WriteObject(const SceneObject& object) const {
    Json json = WriteHead(object.State());
    if (!object.enabled) json["enabled"] = false;
    if (object.render_mode != RenderMode::Inherited)
      json["visible_in_render"] = object.render_mode == RenderMode::On;
    const auto write_vector = [&json](const char* key, const Vector& value, const Vector& usual,
                                      bool animated) {
      if (!animated && !(value == usual)) json[key] = WriteVector(value);
    };
    const Transform& t = object.transform;
    write_vector("position", t.position, {}, object.position_track.has_value());
    write_vector("rotation", t.rotation, {}, object.rotation_track.has_value());
    write_vector("scale", t.scale, {1, 1, 1}, object.scale_track.has_value());
    WriteMesh(object, json);
    WriteParameters(object.State(), json);
    AddIfFilled(json, "keyframes", WriteKeyframes(object, document_));
    Json tags = Json::array();
    for (const auto& tag : object.Tags()) {
      Json tag_json = WriteBody(tag->State(), WriteHead(tag->State()));
      if (tag->GetType() == kSelectionTag) tag_json["polygons"] = WriteRanges(tag->selected);
      tags.push_back(std::move(tag_json));
    }
    AddIfFilled(json, "tags", std::move(tags));
    AddIfFilled(json, "children", WriteRow(object.Children()));
    return json;
  }

  Json WriteEffect(const SceneVideoPost& effect) const {
    return WriteBody(effect.State(), WriteHead(effect.State()));
  }

  static void AddComments(const ElementState& element, const std::string& path,
                          std::vector<JsonComment>& all) {
    for (const JsonComment& comment : element.comments)
      all.push_back({path + comment.path, comment.place, comment.text});
  }

  template <class Row>
  static void AddRow(const Row& row, const std::string& path, std::vector<JsonComment>& all) {
    for (std::size_t i = 0; i < row.size(); ++i)
      AddComments(row[i]->State(), path + "/" + std::to_string(i), all);
  }

  static void AddObjects(const std::vector<std::unique_ptr<SceneObject>>& row,
                         const std::string& path, std::vector<JsonComment>& all) {
    AddRow(row, path, all);
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string place = path + "/" + std::to_string(i);
      AddRow(row[i]->Tags(), place + "/tags", all);
      AddObjects(row[i]->Children(), place + "/children", all);
    }
  }

  static void AddIfFilled(Json& json, const char* key, Json value) {
    if (!value.empty()) json[key] = std::move(value);
  }

  static Json WriteHead(const ElementState& element) {
    Json json = {{"type", element.type->description.name}};
    json.update(WriteName(element));
    return json;
  }

  static Json WriteName(const ElementState& element) {
    Json json = Json::object();
    if (element.name != element.type->display_name) json["name"] = element.name;
    return json;
  }

  /// Adds parameters and keyframes to the head.
  Json WriteBody(const ElementState& element, Json json) const {
    WriteParameters(element, json);
    AddIfFilled(json, "keyframes", WriteKeyframes(element, document_));
    return json;
  }

  void WriteParameters(const ElementState& element, Json& json) const {
    Json parameters = Json::object();
    BaseContainer data = element.data;
    for (const ParameterInfo& info : element.type->description.parameters) {
      const ParameterValue* value = data.Find(info.id);
      if (!value || !info.stored || element.tracks.count(info.id) != 0) continue;
      if (*value == info.default_value && element.written.count(info.id) == 0) continue;
      if (moved_ && info.type == ParameterType::Filename)
        data.SetFilename(info.id, document_.Resolve(data.GetFilename(info.id)));
      parameters[info.Name()] = WriteValue(info, data, document_);
    }
    AddIfFilled(json, "parameters", std::move(parameters));
  }

  const Document& document_;
  bool moved_;
};

/// The text of a short array without objects, such as a point, a polygon or a key of a track. Empty
/// for a value that needs several lines.
std::string OneLine(const Json& json) {
  if (json.is_primitive() || json.empty()) return json.dump();
  if (json.size() > 4 || json.is_object()) return {};
  std::string text;
  for (const Json& element : json) {
    const std::string line = OneLine(element);
    if (line.empty() || element.is_object()) return {};
    text += (text.empty() ? "[" : ", ") + line;
  }
  return text + "]";
}

}  // namespace

std::string WriteDocument(const Document& document, const std::string& folder) {
  const DocumentWriter writer(document, folder != document.folder);
  const Json json = writer.Write();
  try {
    const auto one_line = [](const Json& value, std::size_t) { return OneLine(value); };
    return JsonText(json, 2, one_line, writer.Comments()) + "\n";
  } catch (const Json::exception&) {
    throw DocumentError("a name or a text of the scene isn't UTF-8");
  }
}

void WriteDocumentFile(const Document& document, const std::string& path) {
  namespace fs = std::filesystem;
  try {
    const fs::path absolute = fs::absolute(path).lexically_normal();
    const WholeFile file(absolute.string());
    file.Write(WriteDocument(document, absolute.parent_path().string()));
    file.Commit();
  } catch (const fs::filesystem_error& error) {
    throw DocumentError(path, "can't be written: " + error.code().message());
  } catch (const DocumentError& error) {
    throw DocumentError(path, error.what());
  }
}

}  // namespace host
