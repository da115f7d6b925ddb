// Where the gas of a cached frame lies in the space of its volume object.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "cache/sim_frame.h"
#include "host/interface/scene.h"
#include "math/affine_transform.h"

namespace nbx {

/// A frame stores its position in the world. To follow its object, the position of the object at
/// that time is needed as well; it is in the scene that the run saved with the frames
/// ("Autosave.c4d"). One placement serves one volume and reads that scene once.
class FramePlacement {
 public:
  /// From the object's space to the indices of the frame's grids, with z negated. With this matrix
  /// the gas follows an object that was moved, rotated or scaled after the run, and stays in place
  /// if the size of the domain changed. `directory` is the directory of the cache.
  ///
  /// Without the saved scene, a frame whose voxels and box fit the current domain of the object
  /// follows the object; any other stays at its position in the world. Main thread only.
  Affine3d object_to_cells(const host::BaseObject& volume, const SimFrame& frame,
                           const std::string& directory);

 private:
  const host::BaseObject* saved_volume(const host::BaseObject& volume,
                                       const std::string& directory);

  std::unique_ptr<host::BaseDocument> saved_;
  std::string path_;                         // of the file of `saved_`
  std::filesystem::file_time_type written_;  // when that file was written
};

}  // namespace nbx
