// A finished run in the cache of a volume, whose frames a new run needn't compute again.
#pragma once

#include <memory>

#include "C4D/run/states/simulation_state.h"
#include "host/interface/scene.h"

namespace nbx {

/// The state at the end of the last run in the volume's cache, without its grids, if a new run
/// would give the same frames: the run is finished and has all its frames, began where the volume's
/// range does, and nothing in the scene has changed since. Else null. Leaves the document at the
/// start of the range.
/// `source` is that of RunRequest: a coarse run after an up-resolution run is a change too.
std::unique_ptr<SavedState> find_finished_run(host::BaseObject& volume, const std::string& source);

}  // namespace nbx
