// The values of a scene that a simulation depends on, as text under the names that users know. Two
// runs are compared by them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// Values by "object.parameter" at the document's time: the parameters of the volume that the
/// simulation reads, and for each emitter its tag, its object and all objects below that, with
/// parameters, matrix and a checksum of the points.
using SceneValues = std::map<std::string, std::string>;

enum class ComparedWith {
  kNotes,       ///< of a state: paths are those that the user sees
  kSavedScene,  ///< in another folder, read without its meshes: absolute paths, and no checksums
};
/// With `upres`, also the parameters that only an up-resolution run reads.
SceneValues scene_values(host::BaseObject& volume, bool upres,
                         ComparedWith other = ComparedWith::kNotes);

/// The parameters of the volume that choose what its frames hold.
SceneValues frame_values(const host::BaseObject& volume);

/// The parameters of the volume that change only pictures.
SceneValues picture_values(const host::BaseObject& volume);

/// A value that isn't what it was, or that only one of two scenes has.
struct ValueChange {
  std::string name;  // as in SceneValues
  std::optional<std::string> before, after;
};
std::vector<ValueChange> changes(const SceneValues& then, const SceneValues& now);
/// "smoke.vorticity was 2 and is now 3".
std::string text_of(const ValueChange& change);

/// "smoke.vorticity was 2 and is now 3", "knot.density is gone, it was 1": the first few
/// differences, and how many more there are. Empty if there are none.
std::vector<std::string> differences(const SceneValues& then, const SceneValues& now);

}  // namespace nbx
