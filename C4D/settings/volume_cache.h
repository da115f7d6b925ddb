// The cache of a volume object: its folder, which cached frame a document time shows, and the scene
// that is saved beside the frames.
#pragma once

#include <memory>
#include <string>

#include "cache/bfs.h"
#include "cache/cache_directories.h"
#include "host/interface/scene.h"

namespace nbx {

/// Where the volume's cache belongs, in two parts. OVOLUME.CACHE_NAME is a path whose last folder
/// is the cache's name; a path that ends with '/' is a folder of caches, and the name is empty. If
/// the parameter is empty, the cache belongs beside the scene: "fire.json" with the volume "log"
/// gives "fire.log.cache". A scene that was never on disk has no such place: both parts are empty.
CacheDirData cache_dir_data(const host::BaseObject& volume);
/// Writes the parameter.
void set_cache_dir_data(host::BaseObject& volume, const CacheDirData& data);
/// Both parts as one path, whether the folder exists or not. Empty without a name.
std::string named_cache(const host::BaseObject& volume);

/// The folder of the volume's frames; empty if it doesn't exist.
std::string find_cache(const host::BaseObject& volume);
/// The same folder, made if it doesn't exist; the parameter then names it. A cache without a place
/// gets a new folder (resolve_cache_dir). Empty, after a log line, if that fails.
std::string make_cache(host::BaseObject& volume);

/// "fire.log", the start of the names that the volume's caches get: the scene "fire.json" with the
/// volume "log".
std::string cache_stem(const host::BaseObject& volume);

/// Makes a new folder beside that of the volume's cache, and names it in the parameter: the scene
/// "fire.json" with the volume "log" gets "fire.log.001", or the first free number. A scene that
/// was never on disk gets a new folder as in make_cache. Empty, after a log line, if that fails.
std::string make_new_cache(host::BaseObject& volume);

/// The folder of the frames that an up-resolution run makes of those in `directory`: its name
/// followed by " upres". Such a folder is its own.
std::string upres_cache(const std::string& directory);
/// The inverse.
std::string upres_source(const std::string& directory);
/// Whether a folder has such a name.
bool is_upres_cache(const std::string& directory);

/// The folder of the frames that the volume shows: find_cache, or its up-resolution cache if
/// OVOLUME.SHOW_UPRES is on. Empty if it doesn't exist.
std::string shown_cache(const host::BaseObject& volume);

/// The open store of find_cache; null if there is none. With `create`, of make_cache.
std::shared_ptr<BFS> volume_cache(host::BaseObject& volume, bool create);

/// First and last time of the range that OVOLUME.TIME_MODE selects.
struct TimeRange {
  host::BaseTime start, end;
};
TimeRange time_range(const host::BaseObject& volume);

/// The cached frame that the volume shows at a document time:
///     stride * (frames since the range's start) + start frame - offset
int frame_at_time(const host::BaseObject& volume, const host::BaseTime& time);

/// Where a run saves the scene in its cache.
std::string autosave_file(const std::string& directory);
/// Saves the scene there if the preferences say so; a missing cache is made. Failures are logged.
void autosave(host::BaseObject& volume);
/// True if the volume's cache holds a saved scene: an earlier run has written into it.
bool has_autosave(const host::BaseObject& volume);

}  // namespace nbx
