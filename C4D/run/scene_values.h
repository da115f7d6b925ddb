// What a scene says of a simulation, as text under the names that users know, to tell what has
// changed between two runs.
#pragma once

#include <map>
#include <string>

#include "host/interface/scene.h"

namespace nbx {

/// Values by "object.parameter", as they are at the document's time: the volume's own that the
/// simulation reads, and of each emitter the tag, its object and what lies under that: parameters,
/// matrix and a sum over the points.
using SceneValues = std::map<std::string, std::string>;

SceneValues scene_values(host::BaseObject& volume);

/// The volume's parameters that choose what its frames hold.
SceneValues frame_values(const host::BaseObject& volume);

/// "smoke.vorticity (2, now 3), knot.density (1, now nothing)": the first few, and how many more;
/// empty if there are none.
std::string differences(const SceneValues& then, const SceneValues& now);

}  // namespace nbx
