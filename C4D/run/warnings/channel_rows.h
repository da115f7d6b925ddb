// The four channels of the gas with the parameters that belong to each.
#pragma once

#include <array>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "simulation/channel_key.h"

namespace nbx {

struct ChannelRow {
  int key;           // a ChannelKey
  std::string name;  // of the emitter's amount, and the end of simulate_... and cache_...
  const Parameter<bool>&simulate, &cache;
  const Parameter<double>& amount;
  const Parameter<TagMode>& mode;
};

inline const std::array<ChannelRow, 4>& channel_rows() {
  static const std::array<ChannelRow, 4> rows{
      {{kDensity, "density", OVOLUME.SIMULATE_DENSITY, OVOLUME.CACHE_DENSITY, TVOLUME.DENSITY,
        TVOLUME.DENSITY_MODE},
       {kTemperature, "temperature", OVOLUME.SIMULATE_TEMPERATURE, OVOLUME.CACHE_TEMPERATURE,
        TVOLUME.TEMPERATURE, TVOLUME.TEMPERATURE_MODE},
       {kFuel, "fuel", OVOLUME.SIMULATE_FUEL, OVOLUME.CACHE_FUEL, TVOLUME.FUEL, TVOLUME.FUEL_MODE},
       {kBurn, "burn", OVOLUME.SIMULATE_BURN, OVOLUME.CACHE_BURN, TVOLUME.BURN,
        TVOLUME.BURN_MODE}}};
  return rows;
}

/// The row of a key of the four.
inline const ChannelRow& channel_row(int key) {
  for (const ChannelRow& row : channel_rows())
    if (row.key == key) return row;
  return channel_rows().front();
}

}  // namespace nbx
