// The implementation of objects, tags, materials and textures: the classes behind BaseObject,
// BaseTag and so on.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/base/json_comments.h"
#include "host/interface/material.h"
#include "host/interface/node_data.h"
#include "host/interface/scene.h"
#include "host/interface/texture.h"
#include "host/interface/video_post.h"
#include "host/scene/element_class.h"
#include "host/scene/track.h"
#include "host/scene/transform.h"

namespace host {

/// Data that all elements have.
struct ElementState {
  BaseDocument* document = nullptr;
  const ElementClass* type = nullptr;
  std::string name;
  BaseContainer data;
  std::set<std::int32_t> written;         ///< parameters that the user has set
  std::map<std::int32_t, Track> tracks;   ///< keyframes by parameter
  std::vector<JsonComment> comments;      ///< of the document's text; paths begin at the element
  std::unique_ptr<NodeData> plugin_part;  ///< null for built-in classes

  /// Stores the values of all tracks at `frame` in the container.
  void Evaluate(double frame);
  /// The value in the container, or else the default.
  ParameterValue Shown(std::int32_t parameter) const;
};

/// Implements BaseList2D with an ElementState.
template <class Interface>
class Element : public Interface {
 public:
  std::string GetName() const override { return state_.name; }
  void SetName(const std::string& name) override { state_.name = name; }
  std::int32_t GetType() const override { return state_.type->id; }
  BaseDocument& GetDocument() const override { return *state_.document; }
  BaseContainer& GetDataInstance() override { return state_.data; }
  const BaseContainer& GetDataInstance() const override { return state_.data; }
  const ClassDescription& GetDescription() const override { return state_.type->description; }
  bool IsAnimated(std::int32_t parameter) const override {
    return state_.tracks.count(parameter) != 0;
  }
  void ScaleKeys(std::int32_t parameter, double factor) override {
    if (IsAnimated(parameter)) state_.tracks[parameter].Scale(factor);
  }
  bool Message(std::int32_t type, void* data) override {
    return state_.plugin_part && state_.plugin_part->Message(*this, type, data);
  }
  ParameterValue GetParameter(std::int32_t parameter) override {
    ParameterValue value = state_.Shown(parameter);
    if (state_.plugin_part) state_.plugin_part->GetDParameter(*this, parameter, value);
    return value;
  }
  bool IsEnabled(std::int32_t parameter) const override {
    return !state_.plugin_part || state_.plugin_part->GetDEnabling(*this, parameter);
  }
  NodeData* GetNodeData() const override { return state_.plugin_part.get(); }

  ElementState& State() { return state_; }
  const ElementState& State() const { return state_; }

 protected:
  ElementState state_;
};

class SceneObject;

/// Ranges of integers, both ends included, sorted and with gaps between them.
using IndexRanges = std::vector<std::pair<std::int32_t, std::int32_t>>;

/// Any tag. All tags implement SelectionTag, because ToSelection checks the type. Only selections
/// contain polygons.
class SceneTag final : public Element<SelectionTag> {
 public:
  SceneTag* GetNext() const override { return next_; }
  BaseObject* GetObject() const override;
  bool IsSelected(std::int32_t polygon) const override;

  IndexRanges selected;

 private:
  friend class Document;
  SceneObject* object_ = nullptr;
  SceneTag* next_ = nullptr;
};

class SceneMaterial final : public Element<BaseMaterial> {
 public:
  SceneMaterial* GetNext() const override { return next_; }
  bool HasChannel(std::int32_t channel) const override;
  Vector SampleChannel(std::int32_t channel, const Vector& uvw, double time) const override;

 private:
  friend class Document;
  SceneMaterial* next_ = nullptr;
};

class SceneShader final : public Element<BaseShader> {
 public:
  SceneShader* GetNext() const override { return next_; }
  const std::shared_ptr<const Texture>& GetTexture() const override { return texture_; }

  /// Recreates the texture if a parameter has changed. Throws DocumentError for an image that can't
  /// be read.
  void Update(const std::string& place);

 private:
  friend class Document;
  SceneShader* next_ = nullptr;
  std::shared_ptr<const Texture> texture_;
  BaseContainer made_from_;
};

using SceneRender = Element<BaseList2D>;
using SceneVideoPost = Element<BaseVideoPost>;

/// The points of a mesh at one frame.
struct MeshShape {
  double frame = 0;
  std::vector<Vector> points;
};

/// Any object. All objects implement PolygonObject, because ToPoly checks the type. Only meshes
/// have points.
class SceneObject final : public Element<PolygonObject> {
 public:
  SceneObject* GetUp() const override { return up_; }
  SceneObject* GetDown() const override {
    return children_.empty() ? nullptr : children_.front().get();
  }
  SceneObject* GetNext() const override { return next_; }
  BaseTag* GetFirstTag() const override { return tags_.empty() ? nullptr : tags_.front().get(); }
  Matrix GetMl() const override { return ToMatrix(transform); }
  Matrix GetMg() const override { return up_ ? up_->GetMg() * GetMl() : GetMl(); }
  Matrix GetMgAt(const BaseTime& time) const override {
    return MatrixAt(time.GetFramePosition(state_.document->GetFps()));
  }
  Vector GetMp() const override { return Bounds().first; }
  Vector GetRad() const override { return Bounds().second; }
  bool GetDeformMode() const override { return enabled; }
  RenderMode GetRenderMode() const override { return render_mode; }
  SceneObject* GetCache() const override { return cache_.get(); }
  const Particles& GetParticles() const override;

  std::int32_t GetPointCount() const override { return static_cast<std::int32_t>(points.size()); }
  std::int32_t GetPolygonCount() const override {
    return static_cast<std::int32_t>(polygons.size());
  }
  const Vector* GetPointR() const override { return points.data(); }
  const CPolygon* GetPolygonR() const override { return polygons.data(); }
  const float* GetWeightR() const override { return weights.empty() ? nullptr : weights.data(); }
  const UvwPolygon* GetUvwR() const override { return uvws.empty() ? nullptr : uvws.data(); }

  /// False if the object or one of its parents is switched off.
  bool IsOn() const { return enabled && (!up_ || up_->IsOn()); }
  bool IsUnder(const SceneObject& other) const {
    return up_ && (up_ == &other || up_->IsUnder(other));
  }
  /// The matrix to world space at that frame. Independent of the document's time.
  Matrix MatrixAt(double frame) const;

  const std::vector<std::unique_ptr<SceneObject>>& Children() const { return children_; }
  const std::vector<std::unique_ptr<SceneTag>>& Tags() const { return tags_; }

  /// Evaluates the object, its parameters and those of its tags at `frame`, but not its children.
  void Evaluate(double frame);
  /// Recreates the polygons of a primitive if a parameter has changed.
  void UpdateCache();

  bool enabled = true;
  RenderMode render_mode = RenderMode::Inherited;
  Transform transform;
  /// Keyframes of the transform, if there are any.
  std::optional<Track> position_track, rotation_track, scale_track;
  std::vector<Vector> points;
  std::vector<CPolygon> polygons;
  std::vector<UvwPolygon> uvws;  ///< one per polygon, or empty
  std::vector<float> weights;    ///< one per point, or empty
  /// Shapes of an animated mesh: at least two, with ascending frames and the same number of points.
  std::vector<MeshShape> shapes;
  Particles particles;
  bool inline_mesh = false;  ///< the points are stored in the document

 private:
  friend class Document;
  Transform TransformAt(double frame) const;
  void TakeShape(double frame);
  std::pair<Vector, Vector> Bounds() const;  ///< center, half edges

  SceneObject* up_ = nullptr;
  SceneObject* next_ = nullptr;
  std::vector<std::unique_ptr<SceneObject>> children_;
  std::vector<std::unique_ptr<SceneTag>> tags_;
  std::unique_ptr<SceneObject> cache_;
  BaseContainer made_from_;  ///< parameters from which the cache was made
};

}  // namespace host
