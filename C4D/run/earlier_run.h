// What happens to an earlier run when a new one starts in its cache: the new one continues it,
// replaces it, or leaves it alone. On the main thread.
#pragma once

#include <optional>

#include "C4D/run/run_front_end.h"
#include "C4D/run/run_origin.h"
#include "host/interface/scene.h"
#include "util/outcome.h"

namespace nbx {

/// A failure if no run can begin at this frame of the volume's cache, because the cache doesn't
/// hold it or because it belongs to an earlier run than the frames before it.
Outcome check_start_frame(const host::BaseObject& volume, int frame);

/// Finds where the run begins, and asks the front end about the earlier run if that would lose
/// frames. Nothing if there is to be no run, which the front end has reported.
///
/// A new run first looks for a finished run of the same scene: if all frames of the range are
/// there, no run is needed; if only the end has moved out, the new run adds the missing frames. A
/// run that should continue starts anew if there is no state and the cache is empty. A run that
/// continues in a new cache shares the frames before it with the old one.
std::optional<RunOrigin> settle_origin(host::BaseObject& volume, const RunRequest& request,
                                       RunFrontEnd& front_end);

}  // namespace nbx
