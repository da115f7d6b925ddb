// Reads the parameters of the four channels, and of combustion between them, into the settings of a
// run.
#pragma once

#include "C4D/parameters/volume_channel.h"
#include "simulation/sim_settings.h"

namespace nbx {

/// Which channels are simulated, and which are stored in frames.
void read_channel_sets(SimSettings& settings, const ParameterReader& parameters);

/// The parameters of all channels.
void read_channel_params(SimSettings& settings, const ParameterReader& parameters);

/// The key of the channel that a parameter selects; kNoChannel for none.
int selected_channel(const ParameterReader& parameters, const Parameter<VolumeChannel>& choice);

}  // namespace nbx
