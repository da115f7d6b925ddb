// How much memory a run may need, and how much the machine has.
#pragma once

#include <cstdint>

#include "simulation/sim_settings.h"

namespace nbx {

/// Bytes of all fields that a run can hold at once, in a domain filled with gas. A double, since a
/// domain beyond all memory has more than an integer counts.
double workspace_bytes(const SimSettings& settings, const Vec3d& cells, bool has_solids);

/// Bytes of memory that the machine has; 0 if it can't be told.
std::uint64_t physical_memory();

/// Bytes of memory that this process holds now; 0 if it can't be told.
std::uint64_t resident_memory();

}  // namespace nbx
