// Brings what the volume object says of the four channels, and of combustion between them, into the
// settings of a run.
#pragma once

#include "host/interface/base_container.h"
#include "simulation/sim_settings.h"

namespace nbx {

/// Which channels exist and which are kept in frames.
void read_channel_sets(SimSettings& settings, const host::BaseContainer& parameters);

/// The parameters of all channels.
void read_channel_params(SimSettings& settings, const host::BaseContainer& parameters);

/// The channel that a parameter selects, kNoChannel for none.
int selected_channel(const host::BaseContainer& parameters, std::int32_t id);

}  // namespace nbx
