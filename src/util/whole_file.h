// Files that are whole or not there, whatever ends the process, and if wanted whatever ends the
// machine. A file that the process has written lies in the system's memory for a while: without a
// sync, a power failure takes the last half minute with it, or worse, leaves files of the right
// length that hold zeros.
#pragma once

#include <string>
#include <string_view>

namespace nbx {

enum class Sync {
  kNone,  ///< the system writes to the disk when it likes
  kDisk,  ///< what is finished is on the disk
};

/// Waits until all data of an open file is on the disk. False, with the reason in errno, if the
/// disk failed. What has no disk, a pipe for one, counts as synced.
bool sync_data(int descriptor);
/// The same for the names in a folder: files that were made, renamed or removed in it.
bool sync_folder(const std::string& folder);
/// The folder of a file.
std::string folder_of(const std::string& path);

/// A file that takes its name only when it is complete. Until then it is `part()`, beside it, and
/// what had the name before stays untouched.
class WholeFile {
 public:
  /// A link keeps its place: the file that it names is written.
  WholeFile(const std::string& path, Sync sync);
  /// Removes a file that isn't committed.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// The file to write. It must be closed before `commit`.
  std::string part() const { return path_ + ".part"; }
  /// Gives the file its name. False, with the reason, if that fails.
  bool commit(std::string& reason);

 private:
  std::string path_;
  const Sync sync_;
  bool committed_ = false;
};

/// Writes a WholeFile of these bytes. False, with the reason, if that fails.
bool write_whole(const std::string& path, std::string_view bytes, Sync sync, std::string& reason);

}  // namespace nbx
