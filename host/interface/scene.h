// The elements of a scene as a plug-in sees them: documents, objects, tags.
//
// The host makes and owns all of them; a plug-in holds plain pointers, which live as long as the
// document. Nothing here locks: a document belongs to one thread at a time, the main thread or the
// thread that runs a simulation with it.
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

/// Types of objects that are the host's own; those with particles stand in particles.h. What they
/// have for parameters: light.h, camera.h; `nimbrix describe` lists all.
inline constexpr std::int32_t kNullObject = 5140;
inline constexpr std::int32_t kPolygonObject = 5100;
inline constexpr std::int32_t kLightObject = 5301;
inline constexpr std::int32_t kCameraObject = 5302;
/// Primitives: they make their polygons themselves (BaseObject::GetCache).
inline constexpr std::int32_t kSphereObject = 5311;
inline constexpr std::int32_t kBoxObject = 5312;
inline constexpr std::int32_t kTorusObject = 5313;
inline constexpr std::int32_t kPlaneObject = 5314;
inline constexpr std::int32_t kCylinderObject = 5315;

/// Types of tags that are the host's own: material.h, compositing.h, SelectionTag.
inline constexpr std::int32_t kTextureTag = 5616;
inline constexpr std::int32_t kCompositingTag = 5637;
inline constexpr std::int32_t kSelectionTag = 5673;

/// The render settings' type: camera.h.
inline constexpr std::int32_t kRenderData = 5901;

/// Messages that elements get (BaseList2D::Message, NodeData::Message).
enum MessageType : std::int32_t {
  kMessageDocumentLoaded = 1001,    ///< the element's document was just read; no data
  kMessageButton = 1002,            ///< the user has pressed a button; data: DescriptionMessage
  kMessageParameterChanged = 1003,  ///< the user has set a parameter; data: DescriptionMessage
  kMessageSaveAssets = 1006,        ///< copy what belongs to the element; data: SaveAssets
};

/// Which line of the description a message is about.
struct DescriptionMessage {
  std::int32_t id = 0;
};

/// The document is about to be saved into a folder, with all that it needs. Each element copies its
/// own files there and names the copies in its parameters.
struct SaveAssets {
  Filename folder;
  std::function<void(int done, int total)> progress = {};  ///< files of one element; may be empty
  std::vector<std::string> failures = {};  ///< a line of each element that couldn't copy its files
  std::map<std::string, std::string> copies = {};  ///< folders copied so far: from where to where
};

/// What objects, tags, materials, textures and render settings have in common.
class BaseList2D {
 public:
  virtual ~BaseList2D() = default;

  virtual std::string GetName() const = 0;
  virtual void SetName(const std::string& name) = 0;
  /// The id under which the element's class was registered, or one of the host's own types.
  virtual std::int32_t GetType() const = 0;
  virtual BaseDocument& GetDocument() const = 0;

  /// The parameters as they are at the document's time. A new element has the defaults of its
  /// class in it before NodeData::Init. Values of animated parameters are replaced at each
  /// ExecutePasses.
  virtual BaseContainer& GetDataInstance() = 0;
  virtual const BaseContainer& GetDataInstance() const = 0;

  /// The description with which the class was registered, or the host's own.
  virtual const ClassDescription& GetDescription() const = 0;

  /// True if the parameter has keyframes.
  virtual bool IsAnimated(std::int32_t parameter) const = 0;
  /// Multiplies all keys of the parameter by `factor`; nothing happens if it has none.
  virtual void ScaleKeys(std::int32_t parameter, double factor) = 0;

  /// Hands a message to the element's plug-in class; false if there is none or it doesn't know the
  /// message.
  virtual bool Message(std::int32_t type, void* data = nullptr) = 0;

  /// What a panel shows of a parameter: the plug-in's answer (NodeData::GetDParameter), else the
  /// container's value, else the default of the description; nothing for an id that is no
  /// parameter's.
  virtual ParameterValue GetParameter(std::int32_t parameter) = 0;
  /// False where a panel shows the parameter gray (NodeData::GetDEnabling).
  virtual bool IsEnabled(std::int32_t parameter) const = 0;
  /// What a panel does when the user sets a parameter, and when a button is pressed. Press is false
  /// if nobody knows the message.
  void SetParameter(std::int32_t parameter, const ParameterValue& value) {
    GetDataInstance().Set(parameter, value);
    DescriptionMessage change{parameter};
    Message(kMessageParameterChanged, &change);
  }
  bool Press(std::int32_t button) {
    DescriptionMessage pressed{button};
    return Message(kMessageButton, &pressed);
  }

  /// The plug-in's own part of the element; null for the host's own types.
  virtual NodeData* GetNodeData() const = 0;
};

/// Whether an object is in pictures, as the user has set it on the object itself.
enum class RenderMode : std::int32_t { Inherited, On, Off };

/// An element of the document's tree.
class BaseObject : public BaseList2D {
 public:
  /// Neighbors in the tree; null at its ends.
  virtual BaseObject* GetUp() const = 0;
  virtual BaseObject* GetDown() const = 0;
  virtual BaseObject* GetNext() const = 0;
  virtual BaseTag* GetFirstTag() const = 0;

  /// From the object's own space to its parent's, and to the world's, at the document's time.
  virtual Matrix GetMl() const = 0;
  virtual Matrix GetMg() const = 0;
  /// GetMg as it is at another time. Follows the keyframes of the object and of those above it;
  /// nothing else is evaluated, and the document stays at its time.
  virtual Matrix GetMgAt(const BaseTime& time) const = 0;

  /// Center and half edges of the bounding box in the object's own space. Zero for an object
  /// without extent.
  virtual Vector GetMp() const = 0;
  virtual Vector GetRad() const = 0;

  /// False if the user has switched the object off: it and all that lies under it count for
  /// nothing.
  virtual bool GetDeformMode() const = 0;

  /// The object's own setting; IsVisibleInRender tells what follows from it.
  virtual RenderMode GetRenderMode() const = 0;

  /// The polygons that a generator has made, in its own space: a mesh that isn't in the tree, whose
  /// GetMg and GetUp are those of the generator. Null for any other object. Valid until the next
  /// ExecutePasses.
  virtual PolygonObject* GetCache() const = 0;

  /// The particles of an emitter, a system or a group, at the document's time; empty for any other
  /// object. Valid until the next ExecutePasses.
  virtual const Particles& GetParticles() const = 0;
};

/// False if pictures leave the object out. The object's own mode decides, or that of the nearest
/// object above it that has one. The scene's animation and simulations take no notice.
inline bool IsVisibleInRender(const BaseObject& object) {
  const BaseObject* o = &object;
  while (o->GetRenderMode() == RenderMode::Inherited && o->GetUp()) o = o->GetUp();
  return o->GetRenderMode() != RenderMode::Off;
}

/// Corners of a polygon, as indices of points. A triangle has c == d.
struct CPolygon {
  std::int32_t a = 0, b = 0, c = 0, d = 0;
  friend bool operator==(const CPolygon&, const CPolygon&) = default;
};

/// Texture coordinates at the corners of a polygon, u and v in x and y, v downwards.
struct UvwPolygon {
  Vector a, b, c, d;  ///< c and d are the same for a triangle
  friend bool operator==(const UvwPolygon&, const UvwPolygon&) = default;
};

/// A mesh: the object of type kPolygonObject. Corners are always valid indices and all points are
/// finite. The points are those of the document's time: a mesh that changes its shape has it
/// applied. Its numbers of points and polygons never change.
class PolygonObject : public BaseObject {
 public:
  virtual std::int32_t GetPointCount() const = 0;
  virtual std::int32_t GetPolygonCount() const = 0;
  /// Arrays of those lengths, in the object's own space; valid until the next ExecutePasses.
  virtual const Vector* GetPointR() const = 0;
  virtual const CPolygon* GetPolygonR() const = 0;
  /// As many as polygons, or null for a mesh without texture coordinates.
  virtual const UvwPolygon* GetUvwR() const = 0;
  /// One weight a point, 0 to 1, that the user has painted; null if there are none.
  virtual const float* GetWeightR() const = 0;
};

/// The object as a mesh, or null if it isn't one.
inline PolygonObject* ToPoly(BaseObject* object) {
  return object && object->GetType() == kPolygonObject ? static_cast<PolygonObject*>(object)
                                                       : nullptr;
}

/// The object's polygons: of a mesh itself, of a generator those that it made. Null if it has none.
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
  /// False for a number that is no polygon's.
  virtual bool IsSelected(std::int32_t polygon) const = 0;
};

/// The tag as a selection, or null if it isn't one.
inline SelectionTag* ToSelection(BaseTag* tag) {
  return tag && tag->GetType() == kSelectionTag ? static_cast<SelectionTag*>(tag) : nullptr;
}

class BaseDocument {
 public:
  virtual ~BaseDocument() = default;

  /// Name of the file without its folder, and the absolute folder; empty for a document that was
  /// never on disk.
  virtual std::string GetDocumentName() const = 0;
  virtual Filename GetDocumentPath() const = 0;
  /// An absolute path: a relative one counts from the document's folder. Empty stays empty.
  virtual Filename Resolve(const Filename& path) const = 0;

  virtual FrameRate GetFps() const = 0;
  /// First and last frame of the document, and of its preview range. The last is never before the
  /// first.
  virtual BaseTime GetMinTime() const = 0;
  virtual BaseTime GetMaxTime() const = 0;
  virtual BaseTime GetLoopMinTime() const = 0;
  virtual BaseTime GetLoopMaxTime() const = 0;

  virtual BaseTime GetTime() const = 0;
  /// Only notes the time: ExecutePasses brings the scene there.
  virtual void SetTime(const BaseTime& time) = 0;
  /// Evaluates the scene at the document's time: `animation` moves objects and parameters along
  /// their keyframes and meshes into their shapes; `expressions` has no work; `caches` lets
  /// generators make their polygons and brings particles to the time. Particles depend on the
  /// document and the time alone, not on the times that were asked for before.
  /// False if `breaks`, which may be null, wants the evaluation to end; the scene is then half
  /// evaluated.
  virtual bool ExecutePasses(const BreakTest* breaks, bool animation, bool expressions,
                             bool caches) = 0;

  /// The first object of the tree; null in an empty document.
  virtual BaseObject* GetFirstObject() const = 0;
  /// The first material and texture (material.h, texture.h); null if there is none.
  virtual BaseMaterial* GetFirstMaterial() const = 0;
  virtual BaseShader* GetFirstShader() const = 0;
  /// The render settings (camera.h); every document has them.
  virtual BaseList2D& GetActiveRenderData() const = 0;
  /// The document's post effect (video_post.h) of that class; null if no such class is registered.
  virtual BaseVideoPost* GetActiveVideoPost(std::int32_t type) const = 0;
};

}  // namespace host
