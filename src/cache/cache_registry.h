// The stores of this process, one a directory.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "cache/bfs.h"

namespace nbx {

/// Knows each store while somebody owns it. All operations may be called from any thread that holds
/// no lock of a store.
class CacheRegistry {
 public:
  static CacheRegistry& instance();

  /// The store of a directory, made if it isn't open. Empty if the directory doesn't exist or can't
  /// be read. Where the last owner is just giving one up, waits until it has saved its frames: they
  /// would be missing in the new one.
  std::shared_ptr<BFS> getCache(const std::string& directory);

  /// The store of a directory if it is open.
  std::shared_ptr<BFS> find(const std::string& directory);

  /// Lets an open store go to another directory, or with an empty one be forgotten, so that the
  /// next getCache makes a new one. Its frames are saved first; the caller holds none of them.
  void move(const std::string& from, const std::string& to);

 private:
  struct Entry {
    std::weak_ptr<BFS> store;
    std::uint64_t number;  // of the store; its address may be another's as soon as it is gone
  };
  void destroy(BFS* store, std::uint64_t number);
  std::shared_ptr<BFS> wait(std::unique_lock<std::mutex>& lock, const std::string& path);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, Entry> stores_;  // by absolute path
  std::uint64_t made_ = 0;               // stores so far
};

/// Short for CacheRegistry::instance().getCache.
std::shared_ptr<BFS> getCache(const std::string& directory);

}  // namespace nbx
