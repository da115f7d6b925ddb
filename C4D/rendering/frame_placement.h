// Where the gas of a cached frame lies in the space of its volume object.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "cache/sim_frame.h"
#include "host/interface/scene.h"
#include "math/affine_transform.h"

namespace nbx {

/// A frame knows where it lay in the world. To go along with its object it also needs to know how
/// the object lay, and that is in the scene that the run saved beside the frames ("Autosave.c4d").
/// One placement serves one volume; it reads that scene once.
class FramePlacement {
 public:
  /// From the object's space to the indices of the frame's grids, z negated. So gas goes with an
  /// object that was moved, turned or scaled after the run, and a new size of the domain leaves it
  /// where it is. `directory` is that of the cache.
  ///
  /// Without the saved scene, the frame counts as one of the object's present domain if its voxels
  /// and its box fit that; else it stays where it lay in the world. Main thread only.
  Affine3d object_to_cells(const host::BaseObject& volume, const SimFrame& frame,
                           const std::string& directory);

 private:
  const host::BaseObject* saved_volume(const host::BaseObject& volume,
                                       const std::string& directory);

  std::unique_ptr<host::BaseDocument> saved_;
  std::string path_;  // of `saved_`, as it was at that time
  std::filesystem::file_time_type written_;
};

}  // namespace nbx
