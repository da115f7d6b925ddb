// The caches in a folder, and which of them branched off from which.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cache/cache_notes.h"

namespace nbx {

struct CacheSummary {
  std::string directory, name;
  std::set<int> frames;  // of the last run
  std::set<int> stale;   // that an earlier run has left
  std::set<int> states;  // frames to continue from
  std::uint64_t bytes = 0;
  std::uint64_t shared_bytes = 0;  // of files that other caches hold too
  bool locked = false;
  CacheNotes notes;
  int depth = 0;  // 0 for a cache whose origin isn't listed

  /// Of the program that made its last run; empty for earlier versions that didn't record it.
  std::string version() const { return notes.runs.empty() ? "" : notes.runs.back().version; }
};

CacheSummary summarize_cache(const std::string& directory);

/// The caches in the folder `base` whose names are wanted, and those that branched off from them.
/// Each is followed by its branches.
std::vector<CacheSummary> cache_tree(const std::string& base,
                                     const std::function<bool(const std::string&)>& wanted);

/// The caches beside `directory` that branched off from it.
std::vector<std::string> branches_of(const std::string& directory);

}  // namespace nbx
