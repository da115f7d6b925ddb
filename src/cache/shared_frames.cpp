#include "cache/shared_frames.h"

#include <filesystem>

#include "cache/frame_names.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace fs = std::filesystem;

Outcome share_file(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::create_hard_link(from, to, error);
  if (error) fs::copy_file(from, to, error);
  return error ? Outcome::failure(to + ": " + error.message()) : Outcome::success();
}

Outcome share_frames(const std::string& from, const std::string& to, int last) {
  const std::set<int> stale = stale_frames(from);
  const std::string prefix = cache_prefix(to);
  for (const auto& [frame, name] : list_frames(from)) {
    if (frame > last || stale.contains(frame)) continue;
    const std::string source = (fs::path(from) / name).string();
    const std::string target = to + "/" + frame_file_name(prefix, frame, 0);
    if (Outcome shared = share_file(source, target); !shared) return shared;
  }
  return Outcome::success();
}

}  // namespace nbx
