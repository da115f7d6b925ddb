// Lights and cameras of a model file.
#pragma once

#include <map>

#include "host/model/model_file.h"
#include "host/scene/element.h"

namespace host {

/// What a light or camera of a file comes to here.
struct ModelLens {
  std::int32_t type = 0;  ///< kLightObject or kCameraObject
  BaseContainer parameters = {};
  Matrix turn = {};   ///< from its own axes to those of its node; for most the identity
  double aspect = 0;  ///< width of a camera's picture by its height; 0: not told

  /// Sets the parameters; lengths are multiplied by `scale`, units in the file's 1.
  void Apply(SceneObject& object, double scale) const;
};

/// The lights and cameras of the file's nodes. glTF tells light in candela and lux: 683 lumens, the
/// eye's efficacy at its best, count for a watt, and radiant power over pi for the picture's value
/// of a white surface. So a lamp that is 1 m away and a sun look as they do in programs that reckon
/// in watts. Lights of other files keep their numbers.
std::map<const aiNode*, ModelLens> ReadLenses(const ModelFile& file);

}  // namespace host
