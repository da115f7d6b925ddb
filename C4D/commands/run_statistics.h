// Figures of a run, as fields of events for other programs.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "simulation/health.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// The faces of the domain under the names of the volume's parameters: x- for closed_x_min. The z
/// axis of the grid is opposite to that of the host.
inline constexpr std::array<const char*, 6> kFaceNames{"x-", "x+", "y-", "y+", "z+", "z-"};

StageTimes difference(const StageTimes& later, const StageTimes& earlier);

/// Seconds by stage, without the time outside of the update.
void add_times(host::EventFields& fields, const StageTimes& times);

/// The active box, its cells and the memory in use.
void add_extent(host::EventFields& fields, const Simulation3D& sim);

void add_health(host::EventFields& fields, const Health& health);

}  // namespace nbx
