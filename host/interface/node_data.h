// Base classes of what a plug-in adds to the scene: the part of an object or a tag that is the
// plug-in's own.
//
// The host makes one instance per element through the factory given at registration, and destroys
// it with the element. Each call names the element; the instance may keep the reference. All calls
// come on the thread that uses the document.
#pragma once

#include <cstdint>

#include "host/interface/scene.h"

namespace host {

class NodeData {
 public:
  virtual ~NodeData() = default;

  /// Called once, after the container was filled with the defaults of the description and before
  /// anything of a document is read into it. False: the element can't be made.
  virtual bool Init(BaseList2D& node) {
    static_cast<void>(node);
    return true;
  }

  /// True if the message was known.
  virtual bool Message(BaseList2D& node, std::int32_t type, void* data) {
    static_cast<void>(node), static_cast<void>(type), static_cast<void>(data);
    return false;
  }

  /// What a panel shows of a parameter where that isn't the container's value: texts and marks that
  /// no document holds, and values that follow others. True if `value` was set; it is left alone
  /// otherwise.
  virtual bool GetDParameter(BaseList2D& node, std::int32_t id, ParameterValue& value) {
    static_cast<void>(node), static_cast<void>(id), static_cast<void>(value);
    return false;
  }

  /// False for a parameter or a button that has no effect while the other parameters are as they
  /// are.
  virtual bool GetDEnabling(const BaseList2D& node, std::int32_t id) const {
    static_cast<void>(node), static_cast<void>(id);
    return true;
  }
};

class ObjectData : public NodeData {
 public:
  /// Center and half edges of the bounding box in the object's own space.
  virtual void GetDimension(const BaseObject& object, Vector& center, Vector& radius) const {
    static_cast<void>(object);
    center = radius = {};
  }

  /// Moves particles: `particles` are those of one emitter at the document's time, from where they
  /// go on for `step` seconds. For each one that the object has a say on, add the velocity that it
  /// wants to the entry of `changes` with the same index, and 1 to its count. Called in
  /// ExecutePasses, for objects that are switched on, in steps of one frame of the document.
  virtual void ModifyParticles(const BaseObject& object, const Particles& particles,
                               std::vector<ParticleModification>& changes, double step) {
    static_cast<void>(object), static_cast<void>(particles), static_cast<void>(changes);
    static_cast<void>(step);
  }
};

class TagData : public NodeData {};

}  // namespace host
