// The keys of the simulated quantities in settings, look-ups and the frame store.
#pragma once

namespace nbx {

enum ChannelKey : int {
  kNoChannel = 0,
  kVelocity = 1,
  kDensity = 2,
  kTemperature = 3,
  kFuel = 4,
  kBurn = 5,
  kSolid = 6,
  kExpansion = 8,        // an output of the fuel, no field of its own
  kBurned = 9,           // what burns in the next substep, a part of the state
  kTexture = 10,         // texture coordinates of an up-resolution run, a part of the state
  kSecondVelocity = 18,  // the velocity without its noise detail
};

}  // namespace nbx
