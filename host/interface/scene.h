// The elements of a scene as a plug-in sees them: documents, objects, tags.
//
// The host makes and owns all of them; a plug-in holds plain pointers, which live as long as the
// document. Nothing here locks: a document belongs to one thread at a time, the main thread or the
// thread that runs a simulation with it.
#pragma once

#include <cstdint>
#include <string>

#include "host/interface/base_container.h"
#include "host/interface/base_time.h"
#include "host/interface/c4d_thread.h"
#include "host/interface/vector.h"

namespace host {

class BaseDocument;
class BaseTag;
class NodeData;

/// Types that are the host's own.
inline constexpr std::int32_t kNullObject = 5140;
inline constexpr std::int32_t kPolygonObject = 5100;

/// Messages that elements get (BaseList2D::Message, NodeData::Message).
enum MessageType : std::int32_t {
  kMessageDocumentLoaded = 1001,  ///< the element's document was just read; no data
};

/// What objects and tags have in common.
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

  /// True if the parameter has keyframes.
  virtual bool IsAnimated(std::int32_t parameter) const = 0;
  /// Multiplies all keys of the parameter by `factor`; nothing happens if it has none.
  virtual void ScaleKeys(std::int32_t parameter, double factor) = 0;

  /// Hands a message to the element's plug-in class; false if there is none or it doesn't know the
  /// message.
  virtual bool Message(std::int32_t type, void* data = nullptr) = 0;

  /// The plug-in's own part of the element; null for the host's own types.
  virtual NodeData* GetNodeData() const = 0;
};

/// An element of the document's tree.
class BaseObject : public BaseList2D {
 public:
  /// Neighbours in the tree; null at its ends.
  virtual BaseObject* GetUp() const = 0;
  virtual BaseObject* GetDown() const = 0;
  virtual BaseObject* GetNext() const = 0;
  virtual BaseTag* GetFirstTag() const = 0;

  /// From the object's own space to its parent's, and to the world's, at the document's time.
  virtual Matrix GetMl() const = 0;
  virtual Matrix GetMg() const = 0;

  /// Centre and half edges of the bounding box in the object's own space. Zero for an object
  /// without extent.
  virtual Vector GetMp() const = 0;
  virtual Vector GetRad() const = 0;

  /// False if the user has switched the object off: it and all that lies under it count for
  /// nothing.
  virtual bool GetDeformMode() const = 0;
};

/// Corners of a polygon, as indices of points. A triangle has c == d.
struct CPolygon {
  std::int32_t a = 0, b = 0, c = 0, d = 0;
  friend bool operator==(const CPolygon&, const CPolygon&) = default;
};

/// A mesh: the object of type kPolygonObject. Corners are always valid indices and all points are
/// finite.
class PolygonObject : public BaseObject {
 public:
  virtual std::int32_t GetPointCount() const = 0;
  virtual std::int32_t GetPolygonCount() const = 0;
  /// Arrays of those lengths, in the object's own space; valid until the next ExecutePasses.
  virtual const Vector* GetPointR() const = 0;
  virtual const CPolygon* GetPolygonR() const = 0;
};

/// The object as a mesh, or null if it isn't one.
inline PolygonObject* ToPoly(BaseObject* object) {
  return object && object->GetType() == kPolygonObject ? static_cast<PolygonObject*>(object)
                                                       : nullptr;
}

class BaseTag : public BaseList2D {
 public:
  /// The next tag of the same object, or null.
  virtual BaseTag* GetNext() const = 0;
  virtual BaseObject* GetObject() const = 0;
};

class BaseDocument {
 public:
  virtual ~BaseDocument() = default;

  /// Name of the file without its folder, and the absolute folder; empty for a document that was
  /// never on disk.
  virtual std::string GetDocumentName() const = 0;
  virtual Filename GetDocumentPath() const = 0;
  /// An absolute path: a relative one counts from the document's folder. Empty stays empty.
  virtual Filename Resolve(const Filename& path) const = 0;

  virtual std::int32_t GetFps() const = 0;  ///< at least 1
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
  /// their keyframes; `expressions` and `caches` have no work in a scene without generators.
  /// `thread` is the caller's, null on the main thread. False if its break test fires, with the
  /// scene half evaluated.
  virtual bool ExecutePasses(const C4DThread* thread, bool animation, bool expressions,
                             bool caches) = 0;

  /// The first object of the tree; null in an empty document.
  virtual BaseObject* GetFirstObject() const = 0;
};

}  // namespace host
