// The elements of a scene as a plug-in sees them: documents, objects, tags.
//
// The host creates and owns all elements. A plug-in uses plain pointers, which live as long as the
// document. Nothing is locked: a document belongs to one thread at a time, either the main thread
// or the thread that runs a simulation with it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/interface/base_container.h"
#include "host/interface/base_time.h"
#include "host/interface/c4d_thread.h"
#include "host/interface/particles.h"
#include "host/interface/vector.h"

namespace host {

class BaseDocument;
class BaseMaterial;
class BaseShader;
class BaseTag;
class BaseVideoPost;
class NodeData;
struct ClassDescription;
class PolygonObject;

/// Built-in types of objects. Those with particles are in particles.h, their parameters in light.h
/// and camera.h. `nimbrix describe` lists all.
inline constexpr std::int32_t kNullObject = 5140;
inline constexpr std::int32_t kPolygonObject = 5100;
inline constexpr std::int32_t kLightObject = 5301;
inline constexpr std::int32_t kCameraObject = 5302;
/// Primitives. They generate their polygons (BaseObject::GetCache).
inline constexpr std::int32_t kSphereObject = 5311;
inline constexpr std::int32_t kBoxObject = 5312;
inline constexpr std::int32_t kTorusObject = 5313;
inline constexpr std::int32_t kPlaneObject = 5314;
inline constexpr std::int32_t kCylinderObject = 5315;

/// Built-in types of tags: material.h, compositing.h, SelectionTag.
inline constexpr std::int32_t kTextureTag = 5616;
inline constexpr std::int32_t kCompositingTag = 5637;
inline constexpr std::int32_t kSelectionTag = 5673;

/// The type of the render settings (camera.h).
inline constexpr std::int32_t kRenderData = 5901;

/// Messages to elements (BaseList2D::Message, NodeData::Message).
enum MessageType : std::int32_t {
  kMessageDocumentLoaded = 1001,    ///< the document was just read; no data
  kMessageButton = 1002,            ///< the user has pressed a button; data: DescriptionMessage
  kMessageParameterChanged = 1003,  ///< the user has set a parameter; data: DescriptionMessage
  kMessageSaveAssets = 1006,        ///< copy the files of the element; data: SaveAssets
};

/// The parameter that a message is about.
struct DescriptionMessage {
  std::int32_t id = 0;
};

/// The document is about to be saved into a folder, with everything that it needs. Each element
/// copies its files there and sets its parameters to the copies.
struct SaveAssets {
  Filename folder;
  std::function<void(int done, int total)> progress = {};  ///< files of one element; may be empty
  std::vector<std::string> failures = {};  ///< one line per element that couldn't copy its files
  std::map<std::string, std::string> copies = {};  ///< folders copied so far: source to destination
};

/// Common base of objects, tags, materials, textures, post effects and render settings.
class BaseList2D {
 public:
  virtual ~BaseList2D() = default;

  virtual std::string GetName() const = 0;
  virtual void SetName(const std::string& name) = 0;
  /// The registered id of the class, or the id of a built-in type.
  virtual std::int32_t GetType() const = 0;
  virtual BaseDocument& GetDocument() const = 0;

  /// The parameters at the document's time. A new element contains the defaults of its class before
  /// NodeData::Init. ExecutePasses replaces the values of animated parameters.
  virtual BaseContainer& GetDataInstance() = 0;
  virtual const BaseContainer& GetDataInstance() const = 0;

  /// The registered description of the class, or that of a built-in type.
  virtual const ClassDescription& GetDescription() const = 0;

  /// True if the parameter has keyframes.
  virtual bool IsAnimated(std::int32_t parameter) const = 0;
  /// Multiplies all keys of the parameter by `factor`, if there are any.
  virtual void ScaleKeys(std::int32_t parameter, double factor) = 0;

  /// Sends a message to the element's plug-in class. False if there is none or it doesn't know the
  /// message.
  virtual bool Message(std::int32_t type, void* data = nullptr) = 0;

  /// The value of a parameter for a panel: from the plug-in (NodeData::GetDParameter), otherwise
  /// from the container, otherwise the default. Nothing for an unknown id.
  virtual ParameterValue GetParameter(std::int32_t parameter) = 0;
  /// False if a panel shows the parameter grayed out (NodeData::GetDEnabling).
  virtual bool IsEnabled(std::int32_t parameter) const = 0;
  /// What a panel does when the user sets a parameter or presses a button. Press returns false if
  /// nothing handles the message.
  void SetParameter(std::int32_t parameter, const ParameterValue& value) {
    GetDataInstance().Set(parameter, value);
    DescriptionMessage change{parameter};
    Message(kMessageParameterChanged, &change);
  }
  bool Press(std::int32_t button) {
    DescriptionMessage pressed{button};
    return Message(kMessageButton, &pressed);
  }

  /// The plug-in's part of the element. Null for built-in types.
  virtual NodeData* GetNodeData() const = 0;
};

/// Whether an object is visible in renders, as set on the object itself.
enum class RenderMode : std::int32_t { Inherited, On, Off };

/// An element of the document's tree.
class BaseObject : public BaseList2D {
 public:
  /// Neighbors in the tree. Null if there is none.
  virtual BaseObject* GetUp() const = 0;
  virtual BaseObject* GetDown() const = 0;
  virtual BaseObject* GetNext() const = 0;
  virtual BaseTag* GetFirstTag() const = 0;

  /// The matrix from object space to the parent's space (GetMl) or to world space (GetMg), at the
  /// document's time.
  virtual Matrix GetMl() const = 0;
  virtual Matrix GetMg() const = 0;
  /// GetMg at another time. Uses the keyframes of the object and its parents. Nothing else is
  /// evaluated, and the document's time doesn't change.
  virtual Matrix GetMgAt(const BaseTime& time) const = 0;

  /// Center and half the edge lengths of the bounding box, in object space. Zero for an object
  /// without extent.
  virtual Vector GetMp() const = 0;
  virtual Vector GetRad() const = 0;

  /// False if the user has switched the object off. Then it and everything under it are ignored.
  virtual bool GetDeformMode() const = 0;

  /// The setting of the object itself. IsVisibleInRender combines it with those of its parents.
  virtual RenderMode GetRenderMode() const = 0;

  /// The polygons of a generator, in object space: a mesh that isn't in the tree, whose GetMg and
  /// GetUp are those of the generator. Null for any other object. Valid until the next
  /// ExecutePasses.
  virtual PolygonObject* GetCache() const = 0;

  /// The particles of an emitter, a system or a group at the document's time. Empty for any other
  /// object. Valid until the next ExecutePasses.
  virtual const Particles& GetParticles() const = 0;
};

/// False if pictures hide the object. The mode of the object decides, or that of its nearest parent
/// that has one. Animation and simulations ignore it.
inline bool IsVisibleInRender(const BaseObject& object) {
  const BaseObject* o = &object;
  while (o->GetRenderMode() == RenderMode::Inherited && o->GetUp()) o = o->GetUp();
  return o->GetRenderMode() != RenderMode::Off;
}

/// Corners of a polygon, as point indices. A triangle has c == d.
struct CPolygon {
  std::int32_t a = 0, b = 0, c = 0, d = 0;
  friend bool operator==(const CPolygon&, const CPolygon&) = default;
};

/// Texture coordinates at the corners of a polygon: u in x, v in y. v points down.
struct UvwPolygon {
  Vector a, b, c, d;  ///< c and d are the same for a triangle
  friend bool operator==(const UvwPolygon&, const UvwPolygon&) = default;
};

/// A mesh: an object of type kPolygonObject. Corners are valid indices, and all points are finite.
/// An animated mesh has its shape at the document's time. The numbers of points and polygons never
/// change.
class PolygonObject : public BaseObject {
 public:
  virtual std::int32_t GetPointCount() const = 0;
  virtual std::int32_t GetPolygonCount() const = 0;
  /// Arrays of these lengths, in object space. Valid until the next ExecutePasses.
  virtual const Vector* GetPointR() const = 0;
  virtual const CPolygon* GetPolygonR() const = 0;
  /// One entry per polygon, or null for a mesh without texture coordinates.
  virtual const UvwPolygon* GetUvwR() const = 0;
  /// One painted weight per point, 0 to 1. Null if there are none.
  virtual const float* GetWeightR() const = 0;
};

/// The object as a mesh, or null if it isn't one.
inline PolygonObject* ToPoly(BaseObject* object) {
  return object && object->GetType() == kPolygonObject ? static_cast<PolygonObject*>(object)
                                                       : nullptr;
}

/// The polygons of a mesh or of a generator. Null if the object has none.
inline PolygonObject* GetPolygons(BaseObject* object) {
  PolygonObject* mesh = ToPoly(object);
  return mesh || !object ? mesh : object->GetCache();
}

class BaseTag : public BaseList2D {
 public:
  /// The next tag of the same object, or null.
  virtual BaseTag* GetNext() const = 0;
  virtual BaseObject* GetObject() const = 0;
};

/// A set of polygons: the tag of type kSelectionTag.
class SelectionTag : public BaseTag {
 public:
  /// False for an invalid polygon index.
  virtual bool IsSelected(std::int32_t polygon) const = 0;
};

/// The tag as a selection, or null if it isn't one.
inline SelectionTag* ToSelection(BaseTag* tag) {
  return tag && tag->GetType() == kSelectionTag ? static_cast<SelectionTag*>(tag) : nullptr;
}

class BaseDocument {
 public:
  virtual ~BaseDocument() = default;

  /// Name of the file without its folder, and the absolute folder. Empty for a document that was
  /// never saved.
  virtual std::string GetDocumentName() const = 0;
  virtual Filename GetDocumentPath() const = 0;
  /// Makes a path absolute. Relative paths are relative to the document's folder. An empty path
  /// stays empty.
  virtual Filename Resolve(const Filename& path) const = 0;

  virtual FrameRate GetFps() const = 0;
  /// First and last frame of the document and of its preview range. The last is never before the
  /// first.
  virtual BaseTime GetMinTime() const = 0;
  virtual BaseTime GetMaxTime() const = 0;
  virtual BaseTime GetLoopMinTime() const = 0;
  virtual BaseTime GetLoopMaxTime() const = 0;

  virtual BaseTime GetTime() const = 0;
  /// Only stores the time. ExecutePasses evaluates the scene.
  virtual void SetTime(const BaseTime& time) = 0;
  /// Evaluates the scene at the document's time. `animation` applies keyframes to objects and
  /// parameters, and shapes to meshes. `expressions` has no effect. `caches` updates the polygons
  /// of generators and advances particles. Particles depend only on the document and the time, not
  /// on earlier calls. `breaks` may be null. False if it stops the evaluation; the scene is then
  /// partly evaluated.
  virtual bool ExecutePasses(const BreakTest* breaks, bool animation, bool expressions,
                             bool caches) = 0;

  /// The first object of the tree. Null in an empty document.
  virtual BaseObject* GetFirstObject() const = 0;
  /// The first material and texture (material.h, texture.h). Null if there is none.
  virtual BaseMaterial* GetFirstMaterial() const = 0;
  virtual BaseShader* GetFirstShader() const = 0;
  /// The render settings (camera.h). Every document has them.
  virtual BaseList2D& GetActiveRenderData() const = 0;
  /// The document's post effect of that class (video_post.h). Null if the class isn't registered.
  virtual BaseVideoPost* GetActiveVideoPost(std::int32_t type) const = 0;
};

}  // namespace host
