// What happens to an earlier run when a new one starts in its cache: the new one continues it,
// replaces it, or leaves it alone. On the main thread.
#pragma once

#include <optional>

#include "C4D/run/run_front_end.h"
#include "C4D/run/run_origin.h"
#include "host/interface/scene.h"

namespace nbx {

/// For a run that should continue from the last state of the volume's cache, or from the last one
/// at or before the frame `at_most`. An empty cache has no state, but nothing to lose either: the
/// run then starts anew. Nothing if there is to be no run; the front end has told the user why.
std::optional<RunOrigin> continue_earlier_run(host::BaseObject& volume, std::optional<int> at_most,
                                              RunFrontEnd& front_end);

/// For a new run. A finished run whose end has moved out is extended if nothing else has changed,
/// since a new one would compute the same frames again. Nothing if there is to be no run; the
/// front end has told the user why.
std::optional<RunOrigin> settle_with_earlier_run(host::BaseObject& volume, RunFrontEnd& front_end);

}  // namespace nbx
