// A run in numbers, as fields of events for programs.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "simulation/health.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// The domain's faces as the volume object's parameters name them: x- for closed_x_min. The grid's
/// z runs against the host's.
inline constexpr std::array<const char*, 6> kFaceNames{"x-", "x+", "y-", "y+", "z+", "z-"};

StageTimes difference(const StageTimes& later, const StageTimes& earlier);

/// Seconds by stage, without what passed outside of the update.
void add_times(host::EventFields& fields, const StageTimes& times);

/// The active box, its cells and the memory in use.
void add_extent(host::EventFields& fields, const Simulation3D& sim);

void add_health(host::EventFields& fields, const Health& health);

}  // namespace nbx
