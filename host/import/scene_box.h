// Boxes around what is in a scene.
#pragma once

#include <limits>

#include "host/scene/document.h"

namespace host {

struct SceneBox {
  static constexpr double kFar = std::numeric_limits<double>::infinity();

  Vector low{kFar, kFar, kFar}, high{-kFar, -kFar, -kFar};  ///< empty at first

  bool IsEmpty() const { return low.x > high.x; }
  void Add(const Vector& point);
  Vector Size() const { return high - low; }
  Vector Center() const { return (low + high) * 0.5; }
  /// The center of its lower side.
  Vector Foot() const { return {Center().x, low.y, Center().z}; }
};

/// True if an object or a mesh of the document moves.
bool IsAnimated(const Document& document);

/// The box around the polygons of all objects that are switched on, in world space: at all frames
/// of the document, or at its first. Leaves the document at its first frame.
SceneBox MeshBox(Document& document, bool all_frames);

}  // namespace host
