// Lights and cameras of a model file.
#pragma once

#include <map>

#include "host/model/model_file.h"
#include "host/scene/element.h"

namespace host {

/// A light or camera of a file as a scene object.
struct ModelLens {
  std::int32_t type = 0;  ///< kLightObject or kCameraObject
  BaseContainer parameters = {};
  Matrix turn = {};   ///< from its own axes to those of its node; usually the identity
  double aspect = 0;  ///< aspect ratio of a camera (width / height); 0: unknown

  /// Sets the parameters. Lengths are multiplied by `scale`, the scene units per unit of the file.
  void Apply(SceneObject& object, double scale) const;
};

/// The lights and cameras of the nodes. glTF gives light in candela and lux. We convert 683 lumens
/// (the peak luminous efficacy) to one watt and divide radiant power by pi, so that lights look as
/// bright as in programs that use watts. Lights of other formats keep their numbers.
std::map<const aiNode*, ModelLens> ReadLenses(const ModelFile& file);

}  // namespace host
