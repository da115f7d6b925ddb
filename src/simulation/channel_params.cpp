#include "simulation/channel_params.h"

#include "cache/grid_type.h"

namespace nbx {

ChannelParams default_channel_params(int key) {
  ChannelParams p;
  p.key = key;
  switch (key) {
    case kDensity:
      p.grid_type = kGridDensity;
      p.buoyancy = 10;
      p.direction = {0, -1, 0};
      break;
    case kTemperature:
      p.grid_type = kGridTemperature;
      p.buoyancy = 6;
      p.direction = {0, 1, 0};
      break;
    case kFuel:
      p.grid_type = kGridFuel;
      p.driver_key = kTemperature;
      p.decay_mode = DecayMode::kLinear;
      p.decay = 0.8;
      break;
    case kBurn:
      p.grid_type = kGridBurn;
      break;
    default:
      break;
  }
  return p;
}

std::map<int, ChannelParams> default_channel_params() {
  std::map<int, ChannelParams> all;
  for (int key : {kFuel, kBurn, kDensity, kTemperature}) all[key] = default_channel_params(key);
  return all;
}

}  // namespace nbx
