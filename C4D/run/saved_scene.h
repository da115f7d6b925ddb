// The scene that the last run of a cache has saved beside its frames.
#pragma once

#include <optional>

#include "C4D/run/states/scene_values.h"
#include "cache/frame_time.h"
#include "host/interface/scene.h"

namespace nbx {

/// The volume object of another version of the scene that has the name of `volume`; if several have
/// it, the one at the same place among them. Null if there is none.
host::BaseObject* same_volume(const host::BaseObject& volume, host::BaseDocument& other);

/// What frames depend on.
struct SceneRecord {
  SceneValues scene, frames;
};

/// The values of the scene that the last run in the cache has saved, at a time of the document.
/// Nothing if it can't be read. It is read without its meshes, so it says nothing about shapes.
std::optional<SceneRecord> saved_scene(const host::BaseObject& volume, const std::string& directory,
                                       const Fraction& time, bool upres);

}  // namespace nbx
