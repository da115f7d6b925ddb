#include "host/import/model_import.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/base/document_error.h"
#include "host/import/model_lens.h"
#include "host/import/model_materials.h"
#include "host/import/model_roles.h"
#include "host/import/node_motion.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/interface/material.h"
#include "host/model/model_animation.h"
#include "host/scene/builtin_classes.h"

namespace host {
namespace {

/// The number without its decimals.
std::string Whole(double number) {
  const std::string text = std::to_string(number);
  return text.substr(0, text.find('.'));
}

class ModelImport {
 public:
  ModelImport(const ModelFile& file, const FrameRate& fps, const SceneClasses& classes, bool force)
      : file_(file),
        classes_(classes),
        animation_(file.Scene(), fps.Value()),
        lenses_(ReadLenses(file)),
        scale_(file.IsGltf() ? 100 : 1),
        motion_(animation_, scale_, force) {
    const std::filesystem::path path = std::filesystem::absolute(file.Path()).lexically_normal();
    document_->name = path.filename().string();
    document_->folder = path.parent_path().string();
    document_->fps = fps;
  }

  std::unique_ptr<Document> Import() {
    const double farthest =
        std::max(std::abs(animation_.Range().first), std::abs(animation_.Range().second));
    if (!(farthest < 1e7))
      throw DocumentError(
          "its animation reaches frame " + Whole(farthest) +
          ", but the last possible frame is 10000000; repair the file or pass a lower --fps");
    if (!animation_.IsEmpty()) {
      document_->start = static_cast<std::int32_t>(std::floor(animation_.Range().first));
      document_->end = static_cast<std::int32_t>(std::ceil(animation_.Range().second));
    }
    document_->preview_start = document_->start;
    document_->preview_end = document_->end;
    for (const ElementClass& type : classes_.post_effects.All()) document_->AddVideoPost(type);
    materials_ = ImportMaterials(file_, *document_, classes_);
    // Skip the extra node that the importer adds above the top nodes of the file.
    const aiNode& root = *file_.Scene().mRootNode;
    if (file_.IsGltf() && file_.GltfIndex(root) < 0)
      AddRow(root, nullptr);
    else
      AddNode(root, nullptr);
    ApplyRoles();
    return std::move(document_);
  }

 private:
  void AddRow(const aiNode& node, SceneObject* parent) {
    for (unsigned i = 0; i < node.mNumChildren; ++i) AddNode(*node.mChildren[i], parent);
  }

  void AddNode(const aiNode& node, SceneObject* parent) {
    NodeRoles roles = ReadRoles(file_, node, classes_);
    const auto lens = lenses_.find(&node);
    const bool has_lens = !roles.object && node.mNumMeshes == 0 && lens != lenses_.end();
    const bool turned = has_lens && !(lens->second.turn == Matrix{});
    const std::int32_t type = roles.object          ? roles.object->id
                              : node.mNumMeshes > 0 ? kPolygonObject
                              : has_lens && !turned ? lens->second.type
                                                    : kNullObject;
    SceneObject& object = Make(type, node.mName.C_Str(), parent);
    if (!motion_.Place(object, node)) WarnOfShear(node);
    if (type == kPolygonObject) AddMesh(object, node);
    if (roles.object && node.mNumMeshes > 0)
      Warn(node, "its mesh is ignored, because its extras turn it into another object");
    if (has_lens) {
      SceneObject& lens_object = turned ? Make(lens->second.type, "", &object) : object;
      if (turned && !SetTransform(lens_object, lens->second.turn)) WarnOfShear(node);
      lens->second.Apply(lens_object, scale_);
      if (lens->second.type == kCameraObject) FitPicture(lens->second);
    }
    if (roles.object) roles_.emplace_back(&object.State(), roles.object_parameters);
    for (const auto& [tag_type, parameters] : roles.tags)
      roles_.emplace_back(&document_->AddTag(*tag_type, object)->State(), parameters);
    AddRow(node, &object);
  }

  /// Parameters may link to any object, so they are set last.
  void ApplyRoles() {
    for (const auto& [element, parameters] : roles_)
      ApplyRole(*element, parameters, file_, *document_);
  }

  SceneObject& Make(std::int32_t type, const std::string& name, SceneObject* parent) {
    SceneObject* object = document_->AddObject(*classes_.objects.Find(type), parent);
    if (!object) throw DocumentError("the object " + name + " can't be made");
    if (!name.empty()) object->SetName(name);
    return *object;
  }

  void Warn(const aiNode& node, const std::string& what) {
    document_->warnings.push_back("node " + std::string(node.mName.C_Str()) + ": " + what);
  }

  void WarnOfShear(const aiNode& node) {
    Warn(node, "its axes aren't at right angles; the shear is removed");
  }

  void AddMesh(SceneObject& object, const aiNode& node) {
    BaseContainer& data = object.GetDataInstance();
    data.SetFilename(kMeshFile, {document_->name});
    data.SetString(kMeshFileNode, file_.NodeName(node));
    // Polygons are in the order of the node's meshes, without lines and points.
    std::map<SceneMaterial*, IndexRanges> polygons_of;
    std::int32_t next = 0;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      const aiMesh& mesh = *file_.Scene().mMeshes[node.mMeshes[i]];
      const std::int32_t count =
          std::count_if(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                        [](const aiFace& face) { return face.mNumIndices == 3; });
      if (count > 0)
        polygons_of[materials_[mesh.mMaterialIndex]].emplace_back(next, next + count - 1);
      next += count;
    }
    for (auto& [material, ranges] : polygons_of)
      if (material) AddMaterialTag(object, *material, ranges, polygons_of.size() > 1);
  }

  void AddMaterialTag(SceneObject& object, SceneMaterial& material, const IndexRanges& polygons,
                      bool in_part) {
    SceneTag* tag = document_->AddTag(*classes_.tags.Find(kTextureTag), object);
    tag->GetDataInstance().SetLink(TEXTURETAG_MATERIAL, &material);
    if (!in_part) return;
    SceneTag* selection = document_->AddTag(*classes_.tags.Find(kSelectionTag), object);
    selection->SetName(material.GetName());
    for (const auto& range : polygons) {
      IndexRanges& all = selection->selected;
      if (!all.empty() && all.back().second + 1 == range.first)
        all.back().second = range.second;
      else
        all.push_back(range);
    }
    tag->GetDataInstance().SetString(TEXTURETAG_SELECTION, material.GetName());
  }

  /// The picture gets the aspect ratio of the first camera.
  void FitPicture(const ModelLens& lens) {
    BaseContainer& render = document_->GetActiveRenderData().GetDataInstance();
    if (lens.aspect <= 0 || fitted_) return;
    fitted_ = true;
    const double height = std::round(render.GetLong(RENDER_WIDTH) / lens.aspect);
    render.SetLong(RENDER_HEIGHT, static_cast<std::int32_t>(std::clamp(height, 1.0, 16384.0)));
  }

  const ModelFile& file_;
  const SceneClasses& classes_;
  ModelAnimation animation_;
  std::map<const aiNode*, ModelLens> lenses_;
  double scale_;
  NodeMotion motion_;
  std::unique_ptr<Document> document_ = std::make_unique<Document>();
  std::vector<SceneMaterial*> materials_;
  std::vector<std::pair<ElementState*, JsonPlace>> roles_;
  bool fitted_ = false;
};

}  // namespace

std::unique_ptr<Document> ImportModel(const std::string& path, std::optional<FrameRate> fps,
                                      const SceneClasses& classes, bool force) {
  try {
    const ModelFile file(path, force);
    if (!fps && !ModelAnimation(file.Scene(), 25).IsEmpty())
      throw DocumentError("the file is animated but has no frame rate; pass one with --fps RATE");
    auto document = ModelImport(file, fps.value_or(25), classes, force).Import();
    for (std::string& warning : document->warnings) warning = path + ": " + warning;
    return document;
  } catch (const DocumentError& error) {
    throw DocumentError(path, error.what());
  }
}

bool NeedsRate(const std::string& path) {
  try {
    return !ModelAnimation(ModelFile(path).Scene(), 25).IsEmpty();
  } catch (const DocumentError&) {
    return false;
  }
}

}  // namespace host
