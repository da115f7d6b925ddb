// Brings what the volume object says of the four channels, and of combustion between them, into the
// settings of a run.
#pragma once

#include "C4D/parameters/parameter_reader.h"
#include "simulation/sim_settings.h"

namespace nbx {

/// Which channels exist and which are kept in frames.
void read_channel_sets(SimSettings& settings, const ParameterReader& parameters);

/// The parameters of all channels.
void read_channel_params(SimSettings& settings, const ParameterReader& parameters);

/// The channel that a parameter selects, kNoChannel for none.
int selected_channel(const ParameterReader& parameters, std::int32_t id);

}  // namespace nbx
