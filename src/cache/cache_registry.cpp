#include "cache/cache_registry.h"

#include <QDir>
#include <algorithm>

#include "math/field_pool.h"
#include "util/log.h"

namespace nbx {

namespace {

std::string absolute(const std::string& directory) {
  return QDir::cleanPath(QDir(QString::fromStdString(directory)).absolutePath()).toStdString();
}

}  // namespace

// Never destroyed, since stores in static objects may be destroyed later.
CacheRegistry& CacheRegistry::instance() {
  static CacheRegistry& registry = *new CacheRegistry;
  return registry;
}

// The live store of a path. Waits while one is being closed; null if there is none.
std::shared_ptr<BFS> CacheRegistry::wait(std::unique_lock<std::mutex>& lock,
                                         const std::string& path) {
  for (;;) {
    const auto found = stores_.find(path);
    if (found == stores_.end()) return {};
    if (auto store = found->second.store.lock()) return store;
    changed_.wait(lock);
  }
}

std::shared_ptr<BFS> CacheRegistry::getCache(const std::string& directory) {
  if (directory.empty()) return {};
  const std::string path = absolute(directory);
  std::unique_lock lock(mutex_);
  if (auto store = wait(lock, path)) return store;
  auto made = std::make_unique<BFS>();
  if (!made->setDirectory(path)) return {};
  const std::uint64_t number = ++made_;
  std::shared_ptr<BFS> store(made.release(), [this, number](BFS* s) { destroy(s, number); });
  stores_[path] = {store, number};
  return store;
}

std::shared_ptr<BFS> CacheRegistry::find(const std::string& directory) {
  const std::unique_lock lock(mutex_);
  const auto found = stores_.find(absolute(directory));
  return found == stores_.end() ? nullptr : found->second.store.lock();
}

void CacheRegistry::move(const std::string& from, const std::string& to) {
  const std::shared_ptr<BFS> store = find(from);
  if (!store) return;
  store->removeAllSlots();
  if (!to.empty()) store->setDirectory(absolute(to));
  const std::unique_lock lock(mutex_);
  auto entry = stores_.extract(absolute(from));
  if (!to.empty() && entry) stores_[absolute(to)] = entry.mapped();
  changed_.notify_all();
}

void CacheRegistry::destroy(BFS* store, std::uint64_t number) {
  const std::string directory = store->directory();
  delete store;
  const std::unique_lock lock(mutex_);
  LogMessage() << "Deleting Cache object for " << directory;
  std::erase_if(stores_, [number](const auto& entry) { return entry.second.number == number; });
  changed_.notify_all();
  field_pool().release_unused();
}

std::shared_ptr<BFS> getCache(const std::string& directory) {
  return CacheRegistry::instance().getCache(directory);
}

}  // namespace nbx
