#include "C4D/commands/cache_list.h"

#include <QFileInfo>

#include "C4D/commands/run_options.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/cache_tree.h"
#include "C4D/settings/volume_cache.h"
#include "cache/stale_frames.h"
#include "util/format_size.h"

namespace nbx {

namespace {

/// "  fire.log.001: frames 0-30, 1.2MB (800KB shared), branched off fire.log.cache at frame 20".
std::string line_of(const CacheSummary& cache) {
  std::string line = std::string(2 * cache.depth, ' ') + cache.name + ": " +
                     (cache.frames.empty() ? "no frames" : named_frames(cache.frames));
  if (!cache.stale.empty()) line += ", " + frame_ranges(cache.stale) + " from an earlier run";
  line += ", " + format_size(cache.bytes, 2);
  if (cache.shared_bytes > 0) line += " (" + format_size(cache.shared_bytes, 2) + " shared)";
  if (!cache.states.empty()) line += ", continues from " + named_frames(cache.states);
  if (const auto& origin = cache.notes.origin)
    line += ", branched off " + origin->name + " at frame " + std::to_string(origin->frame);
  line += cache.version().empty() ? ", made by an earlier version"
                                  : ", made by version " + cache.version();
  return cache.locked ? line + ", locked" : line;
}

void show(const CacheSummary& cache, host::CommandContext& context) {
  context.Result(line_of(cache));
  host::EventFields fields{{"directory", cache.directory},
                           {"name", cache.name},
                           {"frames", frame_ranges(cache.frames)},
                           {"stale", frame_ranges(cache.stale)},
                           {"states", frame_ranges(cache.states)},
                           {"bytes", static_cast<std::int64_t>(cache.bytes)},
                           {"shared_bytes", static_cast<std::int64_t>(cache.shared_bytes)},
                           {"locked", cache.locked},
                           {"version", cache.version()}};
  if (const auto& origin = cache.notes.origin)
    fields.insert(fields.end(),
                  {{"origin", origin->name}, {"origin_frame", std::int64_t{origin->frame}}});
  context.Event("cache", fields);
}

int show_all(const std::vector<CacheSummary>& caches, const std::string& place,
             host::CommandContext& context) {
  for (const CacheSummary& cache : caches) show(cache, context);
  if (caches.empty()) context.Result(place + ": no caches");
  return host::kDone;
}

/// The caches of all volumes, each by its name or by the names that new ones get.
int list_scene(const std::string& path, const host::CommandArguments& arguments,
               host::CommandContext& context) {
  const auto document = context.LoadDocument({path});
  if (!document) return host::kBadInput;
  std::vector<host::BaseObject*> volumes = find_volumes(*document, false);
  if (arguments.Has("object") || volumes.empty())
    volumes = {context.FindObject(*document, kVolumeObject)};
  std::vector<CacheSummary> all;
  for (const host::BaseObject* volume : volumes) {
    if (!volume) return host::kBadInput;
    const CacheDirData place = cache_dir_data(*volume);
    const std::string stem = cache_stem(*volume) + ".";
    for (CacheSummary& cache : cache_tree(place.base, [&](const std::string& name) {
           return name == place.name || name.starts_with(stem);
         }))
      if (std::ranges::find(all, cache.directory, &CacheSummary::directory) == all.end())
        all.push_back(std::move(cache));
  }
  return show_all(all, path, context);
}

}  // namespace

int list_scene_or_folder(const std::string& path, const host::CommandArguments& arguments,
                         host::CommandContext& context) {
  if (!QFileInfo(QString::fromStdString(path)).isDir()) return list_scene(path, arguments, context);
  const std::string folder = absolute_path(path);
  std::vector<CacheSummary> caches = cache_tree(folder, [](const std::string&) { return true; });
  if (CacheSummary own = summarize_cache(folder); caches.empty() && own.bytes > 0)
    caches.push_back(std::move(own));
  return show_all(caches, path, context);
}

}  // namespace nbx
