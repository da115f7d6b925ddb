// The parameters in which the four channels of the gas differ.
#pragma once

#include <map>

#include "math/rational_spline.h"
#include "math/vector.h"
#include "simulation/channel_key.h"

namespace nbx {

enum class DecayMode : int { kLinear = 0, kExponential = 1 };

/// What a burning channel feeds. An additive output gets `amount` times what burned. Any other
/// lifts its target up to `amount` times the burn rate, where 1 is what can burn in a whole frame.
struct CombustionOutput {
  double amount = 0;
  bool additive = false;
};

/// Parameters of one channel.
struct ChannelParams {
  int grid_type = 0;             // grid type in frames
  int key = 0;                   // ChannelKey
  int driver_key = kNoChannel;   // channel that controls the decay
  RationalSpline driver_spline;  // maps the driver's value to a limit of the decay
  DecayMode decay_mode = DecayMode::kExponential;
  double decay = 0;      // linear: amount per frame; exponential: fraction per frame; 0 = none
  double diffusion = 0;  // simulation units squared per second
  double buoyancy = 0;   // acceleration per unit of this channel; 0 = none
  double box_threshold = 0.001;             // value that counts as content for the active box
  double driver_blur = 0;                   // radius in simulation units
  bool conserve = false;                    // transport keeps the total
  Vec3d direction;                          // of buoyancy, in grid space
  std::map<int, CombustionOutput> outputs;  // by the target's ChannelKey
};

ChannelParams default_channel_params(int key);

/// Those of all four channels, by ChannelKey.
std::map<int, ChannelParams> default_channel_params();

}  // namespace nbx
