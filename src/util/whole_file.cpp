#include "util/whole_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace nbx {

namespace {

// Other errors mean that nothing can be synced, as with pipes and folders on some networks.
bool disk_failed() { return errno == EIO || errno == ENOSPC || errno == EDQUOT; }

bool sync_path(const std::string& path, int how) {
  const int descriptor = open(path.c_str(), how | O_CLOEXEC);
  if (descriptor < 0) return !disk_failed();
  const bool synced = fsync(descriptor) == 0 || !disk_failed();
  close(descriptor);
  return synced;
}

bool write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

}  // namespace

bool sync_data(int descriptor) { return fdatasync(descriptor) == 0 || !disk_failed(); }

bool sync_folder(const std::string& folder) { return sync_path(folder, O_RDONLY | O_DIRECTORY); }

std::string folder_of(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

WholeFile::WholeFile(const std::string& path, Sync sync) : sync_(sync) {
  std::error_code error;
  path_ = std::filesystem::weakly_canonical(path, error).string();
  if (error) path_ = path;
}

WholeFile::~WholeFile() {
  if (!committed_) unlink(part().c_str());
}

// The data goes to the disk before the name: a name without its data would be an empty file.
Outcome WholeFile::commit() {
  const bool sync = sync_ == Sync::kDisk;
  committed_ =
      (!sync || sync_path(part(), O_RDONLY)) && std::rename(part().c_str(), path_.c_str()) == 0;
  if (committed_ && (!sync || sync_folder(folder_of(path_)))) return Outcome::success();
  return Outcome::failure(std::strerror(errno));
}

Outcome write_whole(const std::string& path, std::string_view bytes, Sync sync) {
  WholeFile file(path, sync);
  const int descriptor = open(file.part().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  const bool written = descriptor >= 0 && write_all(descriptor, bytes);
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  return written ? file.commit() : Outcome::failure(std::strerror(error));
}

}  // namespace nbx
