// The cache of one directory: the frames that lie there, and the way for new ones into it.
#pragma once

#include <string>
#include <vector>

#include "cache/frame_names.h"
#include "cache/sim_frame.h"

namespace nbx {

/// One cache directory, for one thread at a time.
class BFS {
 public:
  /// Selects the directory; see cache_prefix for the names of the files there. False if it doesn't
  /// exist or can't be read.
  bool setDirectory(const std::string& directory);

  const std::string& directory() const { return directory_; }
  const std::string& prefix() const { return prefix_; }

  /// The absolute path of a frame's file.
  std::string fileName(int frame, int substep) const;
  /// True if the frame's file exists and its header is good; `path`, which may be null, is then its
  /// path.
  bool frameFile(int frame, int substep, std::string* path) const;
  /// Frame numbers on disk, ascending, by the file names; substep files don't count.
  std::vector<int> frames() const;

  /// Writes a frame under its name at once, on this thread, with the log lines of the writer, and
  /// sets `frame.saved` to the result. False if it isn't on disk; lastError() then tells why.
  bool writeThrough(SimFrame& frame);
  const std::string& lastError() const { return lastError_; }

  Codec codec = Codec::kRunLength;  // of the files that are written

 private:
  bool readable() const;

  std::string directory_;
  std::string prefix_;
  std::string lastError_;
};

}  // namespace nbx
