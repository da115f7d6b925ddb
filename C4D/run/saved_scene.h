// The scene that the last run of a cache has saved beside its frames.
#pragma once

#include <memory>

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

/// The scene that the last run in a cache has saved. It is read without its meshes, so it says
/// nothing about shapes.
class SavedScene {
 public:
  /// Null if it can't be read, or has no such volume.
  static std::unique_ptr<SavedScene> open(const host::BaseObject& volume,
                                          const std::string& directory);
  /// Its values at a time of the document. With `upres`, as in scene_values.
  SceneRecord at(const Fraction& time, bool upres);
  /// Its volume, at the time of the last `at`.
  const host::BaseObject& volume() const { return *volume_; }

 private:
  std::unique_ptr<host::BaseDocument> document_;
  host::BaseObject* volume_ = nullptr;
};

}  // namespace nbx
