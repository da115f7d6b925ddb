// Names of the files in a cache directory. A frame's file is "%1nbx_sim_cache_%2.bcf": %1 the
// cache's prefix, %2 the frame number in 10 characters padded with '0' (a negative number keeps its
// sign inside of that width), for a substep above 0 followed by "_" and its number.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nbx {

std::string frame_file_name(std::string_view prefix, int frame, int substep);

/// The prefix of a directory's files: that of the files already there, so that a directory may be
/// moved; else the MD5 hash of its path, so that two caches never have the same file names.
std::string cache_prefix(const std::string& directory);

/// The frame of a file name with any prefix. Empty for other files, including those of substeps.
std::optional<int> frame_of_name(std::string_view name);

/// The frames in a directory: their numbers, and the names of their files.
std::map<int, std::string> list_frames(const std::string& directory);

}  // namespace nbx
