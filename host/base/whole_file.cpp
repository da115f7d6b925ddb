#include "host/base/whole_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace host {

namespace fs = std::filesystem;

WholeFile::~WholeFile() {
  std::error_code ignored;
  fs::remove(part_, ignored);  // already gone after a commit
}

void WholeFile::Write(const std::string& text) const {
  errno = 0;
  std::ofstream file(part_, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw fs::filesystem_error("write", part_, {errno ? errno : EIO, std::generic_category()});
}

void WholeFile::MakeFolder() const {
  const fs::path folder = fs::path(path_).parent_path();
  if (!folder.empty()) fs::create_directories(folder);
}

void WholeFile::Commit() const { fs::rename(part_, path_); }

}  // namespace host
