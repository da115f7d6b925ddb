// What a cache records about itself besides its frames: the runs that made them, and the cache that
// it was branched from. In the file "CacheNotes.json"; caches of earlier versions don't have it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "util/outcome.h"

namespace nbx {

/// A run that has stored frames in the cache, from `first` up to the next run's first frame.
struct RunNote {
  int first = 0;
  std::string version;  // of the program
  double seconds = 0;   // that it took for its frames; 0 until it has ended
  int substeps = 0;     // in all of them
  bool operator==(const RunNote&) const = default;
};

/// The cache, in the same folder of caches, whose frames up to `frame` this one shares.
struct CacheOrigin {
  std::string name;
  int frame = 0;
  bool operator==(const CacheOrigin&) const = default;
};

struct CacheNotes {
  std::vector<RunNote> runs;  // by their first frames
  std::optional<CacheOrigin> origin;

  /// A run begins to store frames: those of earlier runs from its first frame on don't count any
  /// more.
  void begin(const RunNote& run);
};

/// Empty if the cache has no notes, or if they can't be read.
CacheNotes read_cache_notes(const std::string& directory);
Outcome write_cache_notes(const std::string& directory, const CacheNotes& notes);

}  // namespace nbx
