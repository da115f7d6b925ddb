// Files that are written completely or not at all.
#pragma once

#include <string>
#include <utility>

namespace host {

/// A file under construction. It is written under a temporary name next to its final place. Commit
/// gives it the final name and replaces an older file. Without a commit the temporary file
/// disappears and an older file stays as it was.
class WholeFile {
 public:
  explicit WholeFile(std::string path) : path_(std::move(path)), part_(path_ + ".part") {}
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// The temporary path to write to.
  const std::string& Part() const { return part_; }

  /// Writes the text to the temporary file. Throws std::filesystem::filesystem_error.
  void Write(const std::string& text) const;
  /// Creates the folder of the file if it is missing. Throws std::filesystem::filesystem_error.
  void MakeFolder() const;
  /// Throws std::filesystem::filesystem_error.
  void Commit() const;

 private:
  std::string path_, part_;
};

}  // namespace host
