// The folders of caches, as the user sees them: creates, finds, locks, lists, renames and removes
// them. A failure returns false after a log line; nothing is thrown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nbx {

/// The place of a volume object's cache, in two parts, so that a scene can move between machines.
struct CacheDirData {
  std::string base;  // the folder of caches
  std::string name;  // this cache's folder in it
  bool operator==(const CacheDirData&) const = default;
};

/// Finds the directory of `data`. With `create`, a missing one is created as "Cache 001", or with
/// the first free number: in `base` if that exists, else in a new "Nimbrix Caches 001", numbered
/// the same way, in the folder `preferred` or, if that is empty, in the user's home. `data` then
/// names the new directory. Returns false, with `data` and `dir` unchanged, if there is none.
bool resolve_cache_dir(CacheDirData& data, std::string& dir, bool create,
                       const std::string& preferred);

/// The user's mark on a finished cache, a file in its directory, that keeps runs from overwriting
/// it. It doesn't guard against two runs at once.
bool cache_locked(const std::string& directory);
bool set_cache_lock(const std::string& directory, bool on);

struct CacheListEntry {
  std::string name;
  std::uint64_t bytes = 0;  // of its frame files
  bool operator==(const CacheListEntry&) const = default;
};

/// The folders in `base` that can be read and contain frame files, sorted by name.
std::vector<CacheListEntry> list_caches(const std::string& base);

/// The files of a cache folder that no cache has, by name: nothing removes them.
std::vector<std::string> foreign_files(const std::string& directory);

/// Makes a new cache beside `directory`: "fire.log.001", or the first free number, beside
/// "fire.log.cache" and beside "fire.log.002". Returns its directory; empty, after a log line, if
/// that fails.
std::string make_cache_beside(const std::string& directory);

/// Renames a cache and writes the new name into `data`. If it is open, its store saves its frames
/// and then uses the new directory. The caller must hold no frame of it.
bool rename_cache(CacheDirData& data, const std::string& name);

/// Removes a cache that isn't locked: its frame files and saved scenes, then the folder, which
/// fails if it contains anything else. If the cache is open, the registry forgets its store. The
/// caller must hold no frame of it.
bool remove_cache(const CacheDirData& data);

}  // namespace nbx
