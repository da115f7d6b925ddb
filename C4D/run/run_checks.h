// What can prevent a run: a volume that is gone, a lock, another volume that uses the same cache,
// the frames of an earlier run. A user's run and a render that simulates check the same.
#pragma once

#include "C4D/run/run_front_end.h"
#include "host/interface/scene.h"
#include "util/outcome.h"

namespace nbx {

/// A failure if the cache is locked, because OVOLUME.CACHE_LOCK is on or the folder holds the lock
/// file: no run may write into it.
/// OVOLUME.CACHE_LOCK says nothing about the cache of an up-resolution run.
Outcome check_unlocked(const host::BaseObject& volume, bool upres = false);

/// A failure if the volume is null, isn't in its document any more, or has a locked cache.
Outcome check_can_run(const host::BaseObject* volume, bool upres);

/// A failure, with the cure, if another volume of the scene that is switched on keeps its frames in
/// the same folder.
Outcome check_own_cache(const host::BaseObject& volume);

/// True if the cache holds an earlier run that the user wants to be asked about.
bool must_ask_about_cache(const host::BaseObject& volume);

/// Asks what to do with that run, and gives the volume a new cache if it is to stay. `frame_before`
/// and `later_frames` are those of OldRun. False if there is to be no run, which the front end has
/// reported.
bool make_room(host::BaseObject& volume, RunFrontEnd& front_end,
               std::optional<int> frame_before = {}, const std::string& later_frames = {});

/// Gives the volume a new cache. False, after a refusal, if none can be made.
bool take_new_cache(host::BaseObject& volume, RunFrontEnd& front_end);

}  // namespace nbx
