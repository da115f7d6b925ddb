// Reads the parameters of the four channels, and of the combustion between them, from a volume
// object.
#pragma once

#include "C4D/parameters/volume_channel.h"
#include "simulation/frame_sink.h"
#include "simulation/solver_params.h"

namespace nbx {

/// Adds the channels that exist to `params`, and those that frames hold to `sink`.
void read_channel_sets(SolverParams& params, FrameSink& sink, const ParameterReader& parameters);

/// Reads the parameters of all channels.
void read_channel_params(SolverParams& params, const ParameterReader& parameters);

/// The key of the channel that a parameter selects; kNoChannel for none.
int selected_channel(const ParameterReader& parameters, const Parameter<VolumeChannel>& choice);

}  // namespace nbx
