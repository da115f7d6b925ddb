// Copies of elements from one document in another, larger or smaller.
#pragma once

#include <map>

#include "host/scene/document.h"

namespace host {

/// The number with a few digits, for people to read.
double Rounded(double number, int digits = 3);
Vector Rounded(const Vector& v, int digits = 3);

/// Copies into one document. Links between copied elements stay; links to anything else are lost.
class SceneCopy {
 public:
  /// Lengths, speeds and accelerations of the copies are multiplied by `scale`. Smoke and fire keep
  /// their look: what counts per meter is divided by it.
  SceneCopy(Document& to, double scale, double frames) : to_(to), scale_(scale), frames_(frames) {}

  /// Copies an object with its tags, but without its children, to the top level. The transform
  /// stays.
  SceneObject& Copy(const SceneObject& object, const SceneClasses& classes);
  SceneMaterial& Copy(const SceneMaterial& material, const SceneClasses& classes);
  /// Copies one parameter with its keyframes to another element of the same class.
  void CopyParameter(const ElementState& from, ElementState& to, const ParameterInfo& info) const;

  /// Call this last: points the links of all copies to the copies.
  void Relink();

 private:
  void CopyState(const ElementState& from, ElementState& to) const;

  Document& to_;
  double scale_;
  double frames_;  ///< by which keyframes move
  std::map<const BaseList2D*, BaseList2D*> copies_;
  std::vector<ElementState*> states_;
};

}  // namespace host
