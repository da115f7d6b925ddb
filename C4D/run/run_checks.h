// What can stand in the way of a run before it starts: a lock, another volume's claim on the cache,
// the frames of an earlier run. A user's run and a render that simulates ask the same questions.
#pragma once

#include <string>

#include "host/interface/scene.h"

namespace nbx {

/// Why no run may write into the volume's cache: OVOLUME.CACHE_LOCK is on, or the folder holds the
/// lock file. Empty if it isn't locked.
std::string what_locks(const host::BaseObject& volume);

/// The error, with its cure, if another volume of the scene that is switched on keeps its frames in
/// the same folder. Empty if the cache is the volume's own.
std::string what_shares_cache(const host::BaseObject& volume);

/// True if the user is to be asked before a run goes over what the cache holds.
bool must_ask_about_cache(const host::BaseObject& volume);

/// Gives the volume a new cache, beside the one that it has. False, after a log line, if none can
/// be made.
bool move_to_new_cache(host::BaseObject& volume);

}  // namespace nbx
