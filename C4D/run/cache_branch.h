// Caches that continue from a frame of another one. Both hold the frames before it as the same
// files, so a branch takes no space until its run stores frames of its own.
#pragma once

#include <set>
#include <string>

#include "util/outcome.h"

namespace nbx {

/// Gives the new cache `to` all that `from`, a cache in the same folder, holds up to the frame
/// `last`: frames, states with their notes, the saved scene. The notes of `to` name its origin.
Outcome share_cache(const std::string& from, const std::string& to, int last);

/// The frames of a cache that have a state to continue from.
std::set<int> frames_with_state(const std::string& directory);

/// Makes a new cache beside `from` that branches off at this frame, with the name `name` or, if
/// that is empty, the first free number. `made` is its directory. A failure leaves nothing behind.
Outcome branch_cache(std::string& made, const std::string& from, int frame,
                     const std::string& name);

}  // namespace nbx
