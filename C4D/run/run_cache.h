// The cache that a run writes into.
#pragma once

#include <memory>

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// Opens the volume's cache, which is made if it is missing, and sets it up for writing as the
/// volume's parameters say. Null, after a log line, if it can't be made.
std::shared_ptr<BFS> open_run_cache(host::BaseObject& volume);

}  // namespace nbx
