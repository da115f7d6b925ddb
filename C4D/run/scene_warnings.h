// What is wrong with a scene although it can be simulated: emitters that give nothing, channels
// that nothing makes, parameters without effect. Each warning names the object, the parameter and
// the cure. Only what is certain is reported: where keyframes or other volumes leave a doubt, there
// is no warning.
#pragma once

#include <string>
#include <vector>

#include "host/interface/scene.h"

namespace nbx {

struct SceneWarning {
  std::string object;     // the volume, or the object with the emitter tag
  std::string parameter;  // as it is named in documents
  std::string text;       // one line, which names the emitter but not the volume
};

/// The warnings for a new run of the volume over its range, emitters first. The document must be at
/// the start of the range, and is there again afterwards. Other frames are evaluated, in order,
/// only while some emitter gives nothing yet. Empty if `breaks` stops the evaluation; it may be
/// null.
std::vector<SceneWarning> scene_warnings(host::BaseObject& volume,
                                         const host::BreakTest* breaks = nullptr);

}  // namespace nbx
