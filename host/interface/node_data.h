// Base classes for the plug-in's part of objects, tags and post effects.
//
// The host creates one instance per element through the registered factory, and destroys it with
// the element. Each call passes the element; the instance may keep the reference. All calls come
// from the thread that uses the document.
#pragma once

#include <cstdint>

#include "host/interface/scene.h"

namespace host {

class NodeData {
 public:
  virtual ~NodeData() = default;

  /// Called once, after the container was filled with the defaults and before a document is read
  /// into it. False: the element can't be created.
  virtual bool Init(BaseList2D& node) {
    static_cast<void>(node);
    return true;
  }

  /// True if the message was known.
  virtual bool Message(BaseList2D& node, std::int32_t type, void* data) {
    static_cast<void>(node), static_cast<void>(type), static_cast<void>(data);
    return false;
  }

  /// Values for a panel that differ from the container: texts that are not stored, and values that
  /// depend on others. True if `value` was set; otherwise it must stay unchanged.
  virtual bool GetDParameter(BaseList2D& node, std::int32_t id, ParameterValue& value) {
    static_cast<void>(node), static_cast<void>(id), static_cast<void>(value);
    return false;
  }

  /// False for a parameter or button that has no effect with the current values of the other
  /// parameters.
  virtual bool GetDEnabling(const BaseList2D& node, std::int32_t id) const {
    static_cast<void>(node), static_cast<void>(id);
    return true;
  }
};

class ObjectData : public NodeData {
 public:
  /// Center and half the edge lengths of the bounding box, in object space.
  virtual void GetDimension(const BaseObject& object, Vector& center, Vector& radius) const {
    static_cast<void>(object);
    center = radius = {};
  }

  /// Moves particles. `particles` are those of one emitter at the document's time, before they move
  /// for `step` seconds. For each particle that the object affects, add the desired velocity to the
  /// entry of `changes` with the same index, and 1 to its count. Called in ExecutePasses, for
  /// enabled objects, in steps of one document frame.
  virtual void ModifyParticles(const BaseObject& object, const Particles& particles,
                               std::vector<ParticleModification>& changes, double step) {
    static_cast<void>(object), static_cast<void>(particles), static_cast<void>(changes);
    static_cast<void>(step);
  }
};

class TagData : public NodeData {};

}  // namespace host
