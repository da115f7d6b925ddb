// Files that are either complete or absent, even if the process is killed while it writes them and,
// with Sync::kDisk, even if the machine loses power. The system keeps written data in memory for a
// while: without a sync, a power failure loses the last half minute or leaves files of the right
// length that hold zeros.
#pragma once

#include <string>
#include <string_view>

#include "util/outcome.h"

namespace nbx {

enum class Sync {
  kNone,  ///< the system decides when data goes to the disk
  kDisk,  ///< a finished file is on the disk
};

/// Waits until all data of an open file is on the disk. False, with the reason in errno, if the
/// disk failed. Anything without a disk, such as a pipe, counts as synced.
bool sync_data(int descriptor);
/// The same for the names in a folder: files that were created, renamed or removed in it.
bool sync_folder(const std::string& folder);
/// The folder of a file.
std::string folder_of(const std::string& path);

/// A file that gets its name only when it is complete. Until then it is called `part()`, and an
/// older file of that name stays untouched.
class WholeFile {
 public:
  /// If `path` is a link, the file that it points to is written and the link stays.
  WholeFile(const std::string& path, Sync sync);
  /// Removes a file that isn't committed.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// The file to write. It must be closed before `commit`.
  std::string part() const { return path_ + ".part"; }
  /// Gives the file its name.
  Outcome commit();

 private:
  std::string path_;
  const Sync sync_;
  bool committed_ = false;
};

/// Writes a WholeFile of these bytes.
Outcome write_whole(const std::string& path, std::string_view bytes, Sync sync);

}  // namespace nbx
