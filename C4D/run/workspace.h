// How much memory a run may need.
#pragma once

#include "simulation/sim_settings.h"

namespace nbx {

/// Bytes of all fields that a run can hold at once, in a domain filled with gas. A double, since a
/// domain beyond all memory has more than an integer counts.
double workspace_bytes(const SimSettings& settings, const Vec3d& cells, bool has_solids);

}  // namespace nbx
