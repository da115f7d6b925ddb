#include "C4D/run/cache_tree.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "C4D/run/cache_branch.h"
#include "cache/cache_directories.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace fs = std::filesystem;

namespace {

using Caches = std::map<std::string, CacheSummary>;

const CacheSummary* origin_of(const CacheSummary& cache, const Caches& all) {
  const auto found = cache.notes.origin ? all.find(cache.notes.origin->name) : all.end();
  return found == all.end() ? nullptr : &found->second;
}

/// Whether the cache or one that it came from is wanted. Notes that were edited may form a ring.
bool is_wanted(const CacheSummary& cache, const Caches& all,
               const std::function<bool(const std::string&)>& wanted) {
  std::size_t steps = 0;
  for (const CacheSummary* c = &cache; c && steps <= all.size(); c = origin_of(*c, all), ++steps)
    if (wanted(c->name)) return true;
  return false;
}

/// Appends the branches of `origin`, or those without an origin, and takes them out of `rest`.
void append(std::vector<CacheSummary>& tree, Caches& rest, const std::string& origin, int depth) {
  std::vector<std::string> names;
  for (const auto& [name, cache] : rest) {
    const CacheSummary* const from = origin_of(cache, rest);
    if (depth == 0 ? !from : cache.notes.origin && cache.notes.origin->name == origin)
      names.push_back(name);
  }
  for (const std::string& name : names) {
    if (!rest.contains(name)) continue;
    tree.push_back(std::move(rest.at(name)));
    tree.back().depth = depth;
    rest.erase(name);
    append(tree, rest, name, depth + 1);
  }
}

}  // namespace

CacheSummary summarize_cache(const std::string& directory) {
  CacheSummary cache;
  cache.directory = directory;
  cache.name = fs::path(directory).filename().string();
  cache.frames = own_frames(directory);
  cache.stale = stale_frames(directory);
  cache.states = frames_with_state(directory);
  cache.locked = cache_locked(directory);
  cache.notes = read_cache_notes(directory);
  std::error_code error;
  for (const auto& file : fs::directory_iterator(directory, error)) {
    if (file.path().extension() != ".bcf") continue;
    const auto bytes = file.file_size(error);
    cache.bytes += bytes;
    if (file.hard_link_count(error) > 1) cache.shared_bytes += bytes;
  }
  return cache;
}

std::vector<CacheSummary> cache_tree(const std::string& base,
                                     const std::function<bool(const std::string&)>& wanted) {
  Caches all;
  for (const CacheListEntry& entry : list_caches(base))
    all.emplace(entry.name, summarize_cache((fs::path(base) / entry.name).string()));
  Caches chosen;
  for (const auto& [name, cache] : all)
    if (is_wanted(cache, all, wanted)) chosen.emplace(name, cache);
  std::vector<CacheSummary> tree;
  append(tree, chosen, "", 0);
  for (auto& [name, cache] : chosen) tree.push_back(std::move(cache));  // a ring
  return tree;
}

std::vector<std::string> branches_of(const std::string& directory) {
  const fs::path path(directory);
  std::vector<std::string> branches;
  for (const CacheListEntry& entry : list_caches(path.parent_path().string())) {
    const std::string branch = (path.parent_path() / entry.name).string();
    const CacheNotes notes = read_cache_notes(branch);
    if (notes.origin && notes.origin->name == path.filename()) branches.push_back(branch);
  }
  return branches;
}

}  // namespace nbx
