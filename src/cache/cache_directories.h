// The folders in which caches lie, as the user sees them: made, found, locked, listed, renamed and
// removed. A failure gives false and a log line; nothing is thrown. Frame files are touched only
// where it says so.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nbx {

/// Where a volume object's cache lies, in two parts, so that a scene can move between machines.
struct CacheDirData {
  std::string base;  // the folder of caches
  std::string name;  // this cache's folder in it
  bool operator==(const CacheDirData&) const = default;
};

/// The directory that `data` names. With `create` it is made if it is missing, as "Cache 001" or
/// the first number that is free: in `base` if that exists, else in a new "Nimbrix Caches 001",
/// numbered likewise, in the folder `preferred` or, where that is empty, the user's home. `data`
/// then names the new one. False if there is none; `data` and `dir` are then as they were.
bool resolve_cache_dir(CacheDirData& data, std::string& dir, bool create,
                       const std::string& preferred);

/// The user's mark on a finished cache, a file in its directory: no run starts over it. A mark, not
/// a guard against two runs at once.
bool cache_locked(const std::string& directory);
bool set_cache_lock(const std::string& directory, bool on);

struct CacheListEntry {
  std::string name;
  std::uint64_t bytes = 0;  // of its frame files
  bool operator==(const CacheListEntry&) const = default;
};

/// The folders in `base` that can be read and hold frame files, by name.
std::vector<CacheListEntry> list_caches(const std::string& base);

/// Renames a cache and writes the new name into `data`. If it is open, its store gives way first
/// and goes along. The caller holds no frame of it.
bool rename_cache(CacheDirData& data, const std::string& name);

/// Removes a cache that isn't locked: its frame files and saved scenes, then the folder, which
/// fails if anything else lies there. If it is open, its store is forgotten. The caller holds no
/// frame of it.
bool remove_cache(const CacheDirData& data);

}  // namespace nbx
