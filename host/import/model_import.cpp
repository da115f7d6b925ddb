#include "host/import/model_import.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <set>

#include "host/base/document_error.h"
#include "host/import/model_lens.h"
#include "host/import/model_materials.h"
#include "host/import/model_roles.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/interface/material.h"
#include "host/model/model_animation.h"
#include "host/model/model_check.h"
#include "host/scene/own_classes.h"

namespace host {
namespace {

constexpr double kMostShear = 1e-3;

/// Without the noise of the file's floats.
Vector Tidy(const Vector& v, double steps) {
  const auto round = [steps](double x) { return std::round(x * steps) / steps + 0.0; };
  return {round(v.x), round(v.y), round(v.z)};
}

/// To 0.00001 units and degrees, and 0.000001 of a scale.
Transform Tidy(const Transform& t) {
  return {Tidy(t.position, 1e5), Tidy(t.rotation, 1e5), Tidy(t.scale, 1e6)};
}

/// Without the digits after the point.
std::string Whole(double number) {
  const std::string text = std::to_string(number);
  return text.substr(0, text.find('.'));
}

class ModelImport {
 public:
  ModelImport(const ModelFile& file, const FrameRate& fps, const SceneClasses& classes, bool force)
      : file_(file),
        classes_(classes),
        force_(force),
        animation_(file.Scene(), fps.Value()),
        lenses_(ReadLenses(file)),
        scale_(file.IsGltf() ? 100 : 1) {
    const std::filesystem::path path = std::filesystem::absolute(file.Path()).lexically_normal();
    document_->name = path.filename().string();
    document_->folder = path.parent_path().string();
    document_->fps = fps;
  }

  std::unique_ptr<Document> Import() {
    const double farthest =
        std::max(std::abs(animation_.Range().first), std::abs(animation_.Range().second));
    if (!(farthest < 1e7))
      throw DocumentError("its animation goes to frame " + Whole(farthest) +
                          ", but scenes go up to 10000000; mend the file or give a lower --fps");
    if (!animation_.IsEmpty()) {
      document_->start = static_cast<std::int32_t>(std::floor(animation_.Range().first));
      document_->end = static_cast<std::int32_t>(std::ceil(animation_.Range().second));
    }
    document_->preview_start = document_->start;
    document_->preview_end = document_->end;
    for (const ElementClass& type : classes_.post_effects.All()) document_->AddVideoPost(type);
    materials_ = ImportMaterials(file_, *document_, classes_);
    // The importer's own node above those of the file says nothing.
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
    Place(object, node);
    if (type == kPolygonObject) AddMesh(object, node);
    if (roles.object && node.mNumMeshes > 0)
      Warn(node, "its mesh is left out, since its extras make it another object");
    if (has_lens) {
      SceneObject& lens_object = turned ? Make(lens->second.type, "", &object) : object;
      if (turned) SetTransform(lens_object, lens->second.turn, node);
      lens->second.Apply(lens_object, scale_);
      if (lens->second.type == kCameraObject) FitPicture(lens->second);
    }
    if (roles.object) roles_.emplace_back(&object.State(), roles.object_parameters);
    for (const auto& [tag_type, parameters] : roles.tags)
      roles_.emplace_back(&document_->AddTag(*tag_type, object)->State(), parameters);
    AddRow(node, &object);
  }

  /// Parameters may link to any object, so that they come last.
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

  /// From the file's space: with F = diag(1, 1, -1), the matrix M becomes F M F.
  Matrix ToHost(const Matrix4& m) const {
    return {Vector{m.a4, m.b4, -m.c4} * scale_,
            {m.a1, m.b1, -m.c1},
            {m.a2, m.b2, -m.c2},
            {-m.a3, -m.b3, m.c3}};
  }

  void SetTransform(SceneObject& object, const Matrix& matrix, const aiNode& node) {
    double shear = 0;
    object.transform = Tidy(ToTransform(matrix, {}, shear));
    if (shear > kMostShear) Warn(node, "its axes aren't at right angles; they are set upright");
  }

  void Place(SceneObject& object, const aiNode& node) {
    SetTransform(object, ToHost(animation_.Local(node, animation_.Range().first)), node);
    const std::vector<double> keys = animation_.KeyFrames(node);
    if (keys.empty()) return;
    // Rotations run along arcs in the file and along angles here: they get keys at each frame.
    baked_keys_ += keys.back() - keys.front();
    if (!force_) RefuseBeyond(baked_keys_, kMostModelKeys, "keys of rotations");
    std::set<double> frames(keys.begin(), keys.end());
    for (double frame = std::ceil(keys.front()); frame < keys.back(); ++frame) frames.insert(frame);

    Track position, rotation, scale;
    Vector former = object.transform.rotation;
    double shear = 0;
    for (const double frame : frames) {
      const Transform t = Tidy(ToTransform(ToHost(animation_.Local(node, frame)), former, shear));
      former = t.rotation;
      rotation.keys.push_back({frame, t.rotation});
      if (!std::binary_search(keys.begin(), keys.end(), frame)) continue;
      position.keys.push_back({frame, t.position});
      scale.keys.push_back({frame, t.scale});
    }
    const auto keep = [](Track& track, std::optional<Track>& kept) {
      const Vector first = std::get<Vector>(track.keys.front().value);
      const bool moves = std::any_of(track.keys.begin(), track.keys.end(), [&](const Key& key) {
        const Vector v = std::get<Vector>(key.value);
        return Length(v - first) > 1e-5 * std::max(1.0, Length(first));
      });
      if (moves) kept = std::move(track);
    };
    keep(position, object.position_track);
    keep(rotation, object.rotation_track);
    keep(scale, object.scale_track);
  }

  void AddMesh(SceneObject& object, const aiNode& node) {
    BaseContainer& data = object.GetDataInstance();
    data.SetFilename(kMeshFile, {document_->name});
    data.SetString(kMeshFileNode, file_.NodeName(node));
    // Polygons stand in the order of the node's meshes, lines and points left out.
    std::map<SceneMaterial*, IndexRanges> polygons_of;
    std::int32_t next = 0;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      const aiMesh& mesh = *file_.Scene().mMeshes[node.mMeshes[i]];
      const auto count = static_cast<std::int32_t>(
          std::count_if(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                        [](const aiFace& face) { return face.mNumIndices == 3; }));
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

  /// Pictures have the sides of the first camera.
  void FitPicture(const ModelLens& lens) {
    BaseContainer& render = document_->GetActiveRenderData().GetDataInstance();
    if (lens.aspect <= 0 || fitted_) return;
    fitted_ = true;
    const double height = std::round(render.GetLong(RENDER_WIDTH) / lens.aspect);
    render.SetLong(RENDER_HEIGHT, static_cast<std::int32_t>(std::clamp(height, 1.0, 16384.0)));
  }

  const ModelFile& file_;
  const SceneClasses& classes_;
  const bool force_;
  double baked_keys_ = 0;
  ModelAnimation animation_;
  std::map<const aiNode*, ModelLens> lenses_;
  double scale_;
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
      throw DocumentError("the file has animation but no frame rate; give it with --fps RATE");
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
