// What the channels that parameters select are in simulations and in frames.
#pragma once

#include <vector>

#include "C4D/parameters/volume_channel.h"

namespace nbx {

/// The ChannelKey of a channel that may drive others; kNoChannel for any other choice.
int channel_key(VolumeChannel choice);

/// The types of the grids that a choice shows.
std::vector<int> channel_grids(VolumeChannel choice);

/// What a shader samples: a grid type or a ramp; kNoGrid for none.
int shader_channel(VolumeChannel choice);

}  // namespace nbx
