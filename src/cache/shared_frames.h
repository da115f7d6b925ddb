// Caches that share files: a run that continues in a new cache needn't copy the frames before it.
#pragma once

#include <string>

#include "util/outcome.h"

namespace nbx {

/// Makes `to` the same file as `from`: a hard link, or a copy where the file system has no links.
/// Whoever writes under one of the names gives it a file of its own (BcfFile::create, WholeFile),
/// so the other keeps its bytes.
Outcome share_file(const std::string& from, const std::string& to);

/// Gives the new cache `to` the frames of `from` up to `last`, without those of an earlier run.
Outcome share_frames(const std::string& from, const std::string& to, int last);

}  // namespace nbx
