// Describes frame files and cache directories, for reports to the user and for checks. Reads only
// the heads unless values are wanted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cache/bcf_format.h"
#include "math/field.h"
#include "math/int_box.h"

namespace nbx {

/// The values of a grid, ghost layer included. NaNs are counted; min, max and mean leave them out,
/// and are 0 if no other value is left.
struct ValueSummary {
  float min = 0, max = 0;
  double mean = 0;
  std::uint64_t nans = 0;
};

ValueSummary summarize(const Field<float>& field);

/// One record of a file, in the order of the file.
struct GridInfo {
  GridHead head;
  std::uint64_t position = 0;  // of the payload
  std::optional<ValueSummary> values;
  std::string damage;  // why the payload or its trailer is bad; empty if good or not read

  /// Size of the grid as plain floats over size of the payload; 0 for a grid without payload.
  double compression() const;
};

struct FrameFileInfo {
  std::string path;
  std::uint64_t bytes = 0;
  FrameTime simTime, frameTime;
  IntBox box;  // the simulated region, see SimFrame::box
  std::vector<GridInfo> grids;
  std::string damage;  // why the file as a whole is bad; empty if it is good

  /// True if neither the file nor any of its grids is known to be damaged.
  bool good() const;
  /// "density: the payload ends early": the first damage; empty if it is good.
  std::string first_damage() const;
};

/// Reads one file; with `values` it decodes every payload. `damage` says what is wrong.
FrameFileInfo read_frame_file_info(const std::string& path, bool values);

/// The frame files of a directory.
struct CacheInfo {
  std::string directory;
  std::string prefix;                                 // of new frames in this directory
  std::vector<std::pair<int, FrameFileInfo>> frames;  // by frame number, ascending
  std::vector<FrameFileInfo> others;                  // substeps and saved states
  std::uint64_t bytes = 0;                            // of all these files

  /// Runs of missing frame numbers between the first and the last frame, each as first and last.
  std::vector<std::pair<int, int>> gaps() const;
};

/// Reads all frame files of a directory. Empty if it doesn't exist or can't be read. `values` as
/// above.
std::optional<CacheInfo> read_cache_info(const std::string& directory, bool values);

}  // namespace nbx
