// Describes VDB files of any origin, for reports to the user.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "cache/cache_info.h"
#include "math/int_box.h"
#include "math/vector.h"

namespace nbx {

/// Metadata as text. That of OpenVDB itself is left out, and of a grid what the file has too.
using VdbMetadata = std::map<std::string, std::string>;

struct VdbGridInfo {
  std::string name;
  std::string type;        // of the values: "float", "vec3s" ...
  std::string grid_class;  // "fog volume", "level set", "staggered", "unknown"
  bool half = false;       // the file holds 16 bits per number
  std::uint64_t active = 0;
  IntBox box;       // of the active voxels, in voxels; empty if there are none
  Vec3d voxel;      // edges
  Vec3d low, high;  // corners of the box, in the file's world
  /// Of the active voxels; for vectors their lengths. Empty for grids of other types than numbers
  /// and vectors, and without active voxels.
  std::optional<ValueSummary> values;
  VdbMetadata metadata;
};

struct VdbFileInfo {
  std::vector<VdbGridInfo> grids;
  VdbMetadata metadata;
};

/// Reads all grids. Throws Exception for a file that can't be read, and in a build without OpenVDB.
VdbFileInfo read_vdb_info(const std::string& path);

}  // namespace nbx
