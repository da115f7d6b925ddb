#include "host/format/document_reader.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "host/base/document_error.h"
#include "host/base/json_comments.h"
#include "host/base/json_place.h"
#include "host/base/nearest_name.h"
#include "host/format/keyframe_text.h"
#include "host/format/mesh_text.h"
#include "host/format/parameter_value.h"
#include "host/format/scene_hints.h"

namespace host {
namespace {

const std::vector<std::string> kObjectKeys = {
    "type",  "name", "enabled",    "visible_in_render", "position", "rotation",
    "scale", "tags", "parameters", "keyframes",         "children"};

constexpr std::int32_t kLargestFrame = 10'000'000;

/// Reads one document. Links may refer to any object, so parameters are read in a second pass.
class DocumentReader {
 public:
  explicit DocumentReader(const SceneClasses& classes) : classes_(classes) {}

  std::unique_ptr<Document> Read(const JsonPlace& json, const std::string& folder,
                                 std::vector<JsonComment> comments) {
    document_->folder = folder;
    const std::vector<std::string> keys = {"fps",          "start",  "end",       "preview_start",
                                           "preview_end",  "render", "materials", "textures",
                                           "post_effects", "objects"};
    json.ExpectKeys(keys, "key", [&](const std::string& key) {
      return DidYouMean(key, keys, SceneHints("document"));
    });
    ReadTimes(json);
    ReadElements(json);
    ReadVideoPosts(json);
    if (json.Has("objects")) ReadObjects(json.At("objects"), nullptr);
    for (const auto& [object, place] : objects_) {
      ReadParameters(object->State(), place, kObjectKeys);
      if (place.Has("keyframes")) ReadKeyframes(*object, place.At("keyframes"), *document_);
      CheckTransformTracks(*object, place);
    }
    for (const auto& [element, place] : elements_) {
      ReadParameters(*element, place, {"name", "keyframes"});
      if (place.Has("keyframes")) ReadKeyframes(*element, place.At("keyframes"), *document_);
    }
    if (!comments.empty()) KeepComments(std::move(comments));
    return std::move(document_);
  }

 private:
  void ReadTimes(const JsonPlace& json) {
    Document& d = *document_;
    const auto frame = [&json](const char* key, std::int32_t fallback) {
      return json.Has(key) ? json.At(key).Whole(-kLargestFrame, kLargestFrame) : fallback;
    };
    if (json.Has("fps")) {
      d.fps = json.At("fps").Rate();
      d.fps_text = json.At("fps").Value().dump();
    }
    d.start = frame("start", std::min(d.start, frame("end", d.end)));
    d.end = frame("end", std::max(d.start, d.end));
    d.preview_start = frame("preview_start", d.start);
    d.preview_end = frame("preview_end", d.end);
    if (d.end < d.start) json.Fail("the end is before the start");
    if (d.preview_end < d.preview_start)
      json.Fail("the preview's end is before the preview's start");
  }

  /// Render settings, materials and textures.
  void ReadElements(const JsonPlace& json) {
    if (json.Has("render")) {
      ElementState& render = document_->GetActiveRenderData().State();
      ExpectKeys(json.At("render"), {"parameters", "keyframes"}, "render keys", render);
      elements_.emplace_back(&render, json.At("render"));
    }
    if (json.Has("materials")) {
      const ElementClass& material = classes_.materials.All().front();
      ReadRow(json.At("materials"), {"name", "parameters", "keyframes"},
              [&](const JsonPlace&) { return document_->AddMaterial(material); });
    }
    if (json.Has("textures"))
      ReadRow(json.At("textures"), {"type", "name", "parameters", "keyframes"},
              [&](const JsonPlace& place) {
                return document_->AddShader(ReadType(place, classes_.shaders, "texture"));
              });
  }

  /// Every class has one effect. The scene may set its parameters.
  void ReadVideoPosts(const JsonPlace& json) {
    for (const ElementClass& type : classes_.post_effects.All())
      if (!document_->AddVideoPost(type))
        json.Fail("the post effect " + Quoted(type.description.name) + " can't be made");
    if (!json.Has("post_effects")) return;
    std::set<const ElementClass*> named;
    ReadRow(json.At("post_effects"), {"type", "name", "parameters", "keyframes"},
            [&](const JsonPlace& place) {
              const ElementClass& type = ReadType(place, classes_.post_effects, "post effect");
              if (!named.insert(&type).second) place.Fail("the post effect occurs twice");
              const auto& all = document_->VideoPosts();
              return std::find_if(all.begin(), all.end(),
                                  [&](const auto& e) { return e->State().type == &type; })
                  ->get();
            });
  }

  template <class Make>
  void ReadRow(const JsonPlace& json, const std::vector<std::string>& keys, Make make) {
    json.ExpectArray();
    for (std::size_t i = 0; i < json.Size(); ++i) {
      const JsonPlace place = json.At(i);
      auto* element = make(place);
      ExpectKeys(place, keys, "", element->State());
      if (place.Has("name")) element->SetName(place.At("name").Text());
      elements_.emplace_back(&element->State(), place);
    }
  }

  void ReadObjects(const JsonPlace& json, SceneObject* parent) {
    json.ExpectArray();
    for (std::size_t i = 0; i < json.Size(); ++i) ReadObject(json.At(i), parent);
  }

  void ReadObject(const JsonPlace& json, SceneObject* parent) {
    const ElementClass& type = ReadType(json, classes_.objects, "object");
    std::vector<std::string> keys = kObjectKeys;
    if (type.id == kPolygonObject)
      keys.insert(keys.end(), {"points", "polygons", "uvs", "weights", "shapes"});
    SceneObject* object = document_->AddObject(type, parent);
    if (!object) json.Fail("the object can't be made");
    ExpectKeys(json, keys, "object", object->State());
    objects_.emplace_back(object, json);

    if (json.Has("name")) object->SetName(json.At("name").Text());
    if (json.Has("enabled")) object->enabled = json.At("enabled").Bool();
    if (json.Has("visible_in_render"))
      object->render_mode = json.At("visible_in_render").Bool() ? RenderMode::On : RenderMode::Off;
    Transform& transform = object->transform;
    if (json.Has("position")) transform.position = json.At("position").VectorValue();
    if (json.Has("rotation")) transform.rotation = json.At("rotation").VectorValue();
    if (json.Has("scale")) transform.scale = ReadScale(json.At("scale"));
    ReadMesh(json, *object);
    if (json.Has("tags")) ReadTags(json.At("tags"), *object);
    if (json.Has("children")) ReadObjects(json.At("children"), object);
  }

  void ReadTags(const JsonPlace& json, SceneObject& object) {
    json.ExpectArray();
    for (std::size_t i = 0; i < json.Size(); ++i) {
      const JsonPlace place = json.At(i);
      const ElementClass& type = ReadType(place, classes_.tags, "tag");
      std::vector<std::string> keys = {"type", "name", "parameters", "keyframes"};
      if (type.id == kSelectionTag) keys.push_back("polygons");
      SceneTag* tag = document_->AddTag(type, object);
      if (!tag) place.Fail("the tag can't be made");
      ExpectKeys(place, keys, "tag", tag->State());
      elements_.emplace_back(&tag->State(), place);
      if (place.Has("name")) tag->SetName(place.At("name").Text());
      if (place.Has("polygons")) tag->selected = ReadRanges(place.At("polygons"));
    }
  }

  static void ExpectKeys(const JsonPlace& json, const std::vector<std::string>& keys,
                         const char* scope, const ElementState& element) {
    json.ExpectKeys(keys, "key", [&](const std::string& key) {
      return KeyHint(key, scope, element.type->description);
    });
  }

  const ElementClass& ReadType(const JsonPlace& json, const ElementClasses& classes,
                               const char* kind) const {
    json.ExpectObject();
    if (!json.Has("type")) json.Fail("the key \"type\" is missing");
    const std::string name = json.At("type").Text();
    if (const ElementClass* type = classes.Find(name)) return *type;
    const std::string hint = TypeHint(name, kind, classes_);
    json.At("type").Fail("unknown type " + Quoted(name) +
                         (hint.empty() ? DidYouMean(name, classes.Names()) : hint));
  }

  void ReadParameters(ElementState& element, const JsonPlace& json,
                      const std::vector<std::string>& keys) {
    if (!json.Has("parameters")) return;
    const JsonPlace parameters = json.At("parameters");
    const ClassDescription& description = element.type->description;
    parameters.ExpectKeys(description.Names(), "parameter", [&](const std::string& name) {
      return ParameterHint(name, description, keys, classes_);
    });
    for (const auto& [key, value] : parameters.Value().items()) {
      const ParameterInfo& info = *description.Find(key);
      element.data.Set(info.id, ReadValue(info, parameters.At(key), *document_));
      element.written.insert(info.id);
    }
  }

  static void CheckTransformTracks(const SceneObject& object, const JsonPlace& json) {
    const auto check = [&json](bool animated, const char* key) {
      if (animated && json.Has(key))
        json.At(key).Fail("there are keyframes too; remove one of them");
    };
    check(object.position_track.has_value(), "position");
    check(object.rotation_track.has_value(), "rotation");
    check(object.scale_track.has_value(), "scale");
  }

  /// Gives each comment to the innermost element around it.
  void KeepComments(std::vector<JsonComment> comments) {
    std::map<std::string, ElementState*> owners;
    for (const auto& [object, place] : objects_) owners[PathOf(place)] = &object->State();
    for (const auto& [element, place] : elements_) owners[PathOf(place)] = element;
    for (JsonComment& comment : comments) {
      std::string path = comment.path;
      while (!path.empty() && owners.count(path) == 0) path.erase(path.rfind('/'));
      comment.path.erase(0, path.size());
      (path.empty() ? document_->comments : owners[path]->comments).push_back(std::move(comment));
    }
  }

  /// "/objects/2/tags/0" for the element at objects[2].tags[0].
  static std::string PathOf(const JsonPlace& element) {
    std::string path = "/";
    for (const char c : element.Place())
      if (c != ']') path += c == '[' || c == '.' ? '/' : c;
    return path;
  }

  const SceneClasses& classes_;
  std::unique_ptr<Document> document_ = std::make_unique<Document>();
  std::vector<std::pair<SceneObject*, JsonPlace>> objects_;
  std::vector<std::pair<ElementState*, JsonPlace>> elements_;  ///< all others
};

std::string ReadFile(const std::string& path) {
  if (std::filesystem::is_directory(path)) throw DocumentError("is a folder, not a scene");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw DocumentError("can't be opened: " + std::generic_category().message(errno));
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

std::unique_ptr<Document> ReadDocument(const std::string& text, const std::string& folder,
                                       const SceneClasses& classes) {
  const Json json = ParseCommentedJson(text);
  return DocumentReader(classes).Read({json, ""}, folder, FindComments(text));
}

std::unique_ptr<Document> ReadDocumentFile(const std::string& path, const SceneClasses& classes) {
  try {
    const std::filesystem::path absolute = std::filesystem::absolute(path).lexically_normal();
    auto document = ReadDocument(ReadFile(path), absolute.parent_path().string(), classes);
    document->name = absolute.filename().string();
    for (std::string& warning : document->warnings) warning = path + ": " + warning;
    return document;
  } catch (const DocumentError& error) {
    throw DocumentError(path, error.what());
  }
}

}  // namespace host
