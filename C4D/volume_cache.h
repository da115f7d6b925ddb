// Where the frames of a volume object are: its cache's directory, which document time shows which
// cached frame, and the scene that is saved beside the frames.
#pragma once

#include <memory>
#include <string>

#include "cache/bfs.h"
#include "cache/cache_directories.h"
#include "host/interface/scene.h"

namespace nbx {

/// OVOLUME_CACHE_NAME, a path, in two parts: its last folder is the cache's name; a path that ends
/// with '/' is a folder of caches alone. And back into the parameter.
CacheDirData cache_dir_data(const host::BaseObject& volume);
void set_cache_dir_data(host::BaseObject& volume, const CacheDirData& data);

/// Where the frames go unless a new folder is to be made for them: the directory that
/// OVOLUME_CACHE_NAME names, or without a name one beside the scene ("fire.json" with the volume
/// "log": "fire.log.cache"). It may be missing. Empty if the name is a folder of caches.
std::string named_cache(const host::BaseObject& volume);

/// The directory of the volume's cache; with `create` it is made if it is missing, and the
/// parameter then names it. Empty if there is none, with a log line where one should have been
/// made.
std::string cache_directory(host::BaseObject& volume, bool create);
/// The same without `create`.
std::string existing_cache_directory(const host::BaseObject& volume);

/// The open store of that directory; empty if there is none.
std::shared_ptr<BFS> volume_cache(host::BaseObject& volume, bool create);

/// First and last time of the range that OVOLUME_TIME_MODE selects.
struct TimeRange {
  host::BaseTime start, end;
};
TimeRange time_range(const host::BaseObject& volume);

/// The cached frame that the volume shows at a document time:
///     stride * (frames since the range's start) + start frame - offset
int frame_at_time(const host::BaseObject& volume, const host::BaseTime& time);

/// Saves the scene as "Autosave.c4d" into the volume's cache, which is made if it is missing, if
/// the user prefers that. Failures are logged.
void autosave(host::BaseObject& volume);
/// The path of that file, whether it exists or not; empty without a cache.
std::string autosave_file(host::BaseObject& volume);

}  // namespace nbx
