// Where the frames of a volume object are: its cache's directory, which document time shows which
// cached frame, and the scene that is saved beside the frames.
#pragma once

#include <memory>
#include <string>

#include "cache/bfs.h"
#include "cache/cache_directories.h"
#include "host/interface/scene.h"

namespace nbx {

/// Where the volume's cache belongs, in two parts. OVOLUME_CACHE_NAME is a path whose last folder
/// is the cache's name; a path that ends with '/' is a folder of caches, and the name is empty. If
/// the parameter is empty, the cache belongs beside the scene: "fire.json" with the volume "log"
/// gives "fire.log.cache". A scene that was never on disk has no such place: both parts are empty.
CacheDirData cache_dir_data(const host::BaseObject& volume);
/// Writes the parameter.
void set_cache_dir_data(host::BaseObject& volume, const CacheDirData& data);
/// Both parts as one path, whether the folder exists or not. Empty without a name.
std::string named_cache(const host::BaseObject& volume);

/// The folder of the volume's frames, if it exists; else empty. Whoever looks for a volume's cache
/// asks here.
std::string find_cache(const host::BaseObject& volume);
/// The same folder, made if it doesn't exist; the parameter then names it. A cache without a place
/// gets a new folder (resolve_cache_dir). Empty, after a log line, if none can be made.
std::string make_cache(host::BaseObject& volume);

/// The open store of find_cache; null if there is none. With `create`, of make_cache.
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
/// True if the volume's cache holds such a file, so that it is an earlier run's.
bool has_autosave(const host::BaseObject& volume);

}  // namespace nbx
