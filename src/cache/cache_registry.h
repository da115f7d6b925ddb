// The open stores of this process, one per directory.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "cache/bfs.h"

namespace nbx {

/// Knows each store while somebody owns it. There is one registry in a process, since two stores of
/// one directory would write to the same files. All operations may be called from any thread that
/// holds no lock of a store.
class CacheRegistry {
 public:
  static CacheRegistry& instance();

  /// The store of a directory, opened if it isn't open yet. Null if the directory doesn't exist or
  /// can't be read. If the last owner is just closing a store of this directory, waits until that
  /// store has saved its frames, which the new one would miss.
  std::shared_ptr<BFS> getCache(const std::string& directory);

  /// The store of a directory, or null if it isn't open.
  std::shared_ptr<BFS> find(const std::string& directory);

  /// Moves an open store to another directory. With an empty `to` the registry forgets the store,
  /// so that the next getCache opens a new one. Saves the store's frames first; the caller must
  /// hold none of them.
  void move(const std::string& from, const std::string& to);

 private:
  struct Entry {
    std::weak_ptr<BFS> store;
    std::uint64_t number;  // identifies the store; an address may be used again
  };
  void destroy(BFS* store, std::uint64_t number);
  std::shared_ptr<BFS> wait(std::unique_lock<std::mutex>& lock, const std::string& path);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, Entry> stores_;  // by absolute path
  std::uint64_t made_ = 0;               // stores so far
};

/// CacheRegistry::instance().getCache.
std::shared_ptr<BFS> getCache(const std::string& directory);

}  // namespace nbx
