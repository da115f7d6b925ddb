// Transforms and keyframes of the nodes of a model file.
#pragma once

#include "host/model/model_animation.h"
#include "host/scene/element.h"

namespace host {

class NodeMotion {
 public:
  /// `scale` converts lengths of the file to units. Without `force` a model with too many rotation
  /// keys is refused (model_check.h).
  NodeMotion(const ModelAnimation& animation, double scale, bool force)
      : animation_(animation), scale_(scale), force_(force) {}

  /// Sets the transform of the object and its keyframes. Rotations get one key per frame, because
  /// they follow arcs in the file and angles here. False if the axes of the node aren't at right
  /// angles, so that its shear is lost. Throws DocumentError.
  bool Place(SceneObject& object, const aiNode& node);

 private:
  struct Tracks;
  Tracks Bake(const aiNode& node, const std::vector<double>& keys, const Vector& rotation) const;
  Matrix ToHost(const Matrix4& m) const;

  const ModelAnimation& animation_;
  double scale_;
  bool force_;
  double baked_keys_ = 0;
};

/// Sets the transform, rounded to 0.00001 units and degrees and 0.000001 of a scale. False if the
/// axes aren't at right angles.
bool SetTransform(SceneObject& object, const Matrix& matrix);

}  // namespace host
