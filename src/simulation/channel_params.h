// What makes the four channels of the gas differ from each other.
#pragma once

#include "math/vector.h"
#include "simulation/channel_key.h"

namespace nbx {

enum class DecayMode : int { kLinear = 0, kExponential = 1 };

/// Parameters of one channel, read anew each step.
struct ChannelParams {
  int grid_type = 0;  // grid type in frames
  int key = 0;        // ChannelKey
  DecayMode decay_mode = DecayMode::kExponential;
  double decay = 0;     // linear: amount per frame; exponential: fraction per frame; 0 = none
  double buoyancy = 0;  // acceleration per unit of this channel; 0 = none
  Vec3d direction;      // of buoyancy, in grid space
};

/// The construction values of a channel.
ChannelParams default_channel_params(int key);

}  // namespace nbx
