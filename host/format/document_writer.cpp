#include "host/format/document_writer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/base/document_error.h"
#include "host/base/json_place.h"
#include "host/format/keyframe_text.h"
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
      Json body = WriteBody(effect->State(), WriteHead(effect->State()));
      if (body.size() > 1) effects.push_back(std::move(body));  // more than the type
    }
    AddIfFilled(json, "materials", std::move(materials));
    AddIfFilled(json, "textures", std::move(textures));
    AddIfFilled(json, "post_effects", std::move(effects));
    json["objects"] = WriteRow(d.Objects());
    return json;
  }

 private:
  /// In the form in which it was read.
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
    if (object.inline_mesh) WritePolygons(object, json);
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

  /// The head with parameters and keyframes.
  Json WriteBody(const ElementState& element, Json json) const {
    WriteParameters(element, json);
    AddIfFilled(json, "keyframes", WriteKeyframes(element, document_));
    return json;
  }

  static Json WriteRanges(const IndexRanges& ranges) {
    Json json = Json::array();
    for (const auto& [first, last] : ranges)
      json.push_back(first == last ? Json(first) : Json::array({first, last}));
    return json;
  }

  static Json WritePoints(const std::vector<Vector>& points) {
    Json json = Json::array();
    for (const Vector& p : points) json.push_back(WriteVector(p));
    return json;
  }

  static void WritePolygons(const SceneObject& object, Json& json) {
    Json polygons = Json::array();
    const std::vector<Vector>& first =
        object.shapes.empty() ? object.points : object.shapes.front().points;
    for (const CPolygon& p : object.polygons)
      polygons.push_back(p.c == p.d ? Json::array({p.a, p.b, p.c})
                                    : Json::array({p.a, p.b, p.c, p.d}));
    json["points"] = WritePoints(first);
    json["polygons"] = std::move(polygons);
    Json uvs = Json::array();
    for (std::size_t i = 0; i < object.uvws.size(); ++i) {
      const UvwPolygon& uvw = object.uvws[i];
      const CPolygon& p = object.polygons[i];
      Json corners = Json::array();
      for (const Vector* corner : {&uvw.a, &uvw.b, &uvw.c, &uvw.d})
        if (corner != &uvw.d || p.c != p.d) corners.push_back(Json::array({corner->x, corner->y}));
      uvs.push_back(std::move(corners));
    }
    AddIfFilled(json, "uvs", std::move(uvs));
    AddIfFilled(json, "weights", Json(object.weights));
    Json shapes = Json::array();
    for (const MeshShape& shape : object.shapes)
      shapes.push_back({{"frame", shape.frame}, {"points", WritePoints(shape.points)}});
    AddIfFilled(json, "shapes", std::move(shapes));
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

bool HoldsObjects(const Json& json) {
  return json.is_object() ||
         (json.is_array() && std::any_of(json.begin(), json.end(), HoldsObjects));
}

/// One line for each key, and for each element of an array, but for short arrays without objects:
/// points, polygons and keyframes stand on a line.
void AppendText(const Json& json, const std::string& indent, std::string& text) {
  if (json.is_primitive()) {
    text += json.dump();
    return;
  }
  const bool one_line = json.empty() || (json.size() <= 4 && !HoldsObjects(json));
  const std::string line_break = one_line ? "" : "\n" + indent;
  text += json.is_array() ? "[" : "{";
  std::string separator = one_line ? "" : line_break + "  ";
  for (const auto& [key, value] : json.items()) {
    text += separator;
    if (json.is_object()) text += Json(key).dump() + ": ";
    AppendText(value, indent + "  ", text);
    separator = one_line ? ", " : "," + line_break + "  ";
  }
  text += line_break + (json.is_array() ? "]" : "}");
}

}  // namespace

std::string WriteDocument(const Document& document, const std::string& folder) {
  const Json json = DocumentWriter(document, folder != document.folder).Write();
  try {
    std::string text;
    AppendText(json, "", text);
    return text + "\n";
  } catch (const Json::exception&) {
    throw DocumentError("a name or a text of the scene isn't UTF-8");
  }
}

void WriteDocumentFile(const Document& document, const std::string& path) {
  try {
    namespace fs = std::filesystem;
    const fs::path absolute = fs::absolute(path).lexically_normal();
    const std::string text = WriteDocument(document, absolute.parent_path().string());
    const std::string part = absolute.string() + ".part";
    std::ofstream file(part, std::ios::binary);
    file << text;
    file.close();
    std::error_code error;
    if (file) fs::rename(part, absolute, error);
    if (!file || error) {
      std::error_code ignored;
      fs::remove(part, ignored);
      throw DocumentError("can't be written");
    }
  } catch (const DocumentError& error) {
    throw DocumentError(path, error.what());
  }
}

}  // namespace host
