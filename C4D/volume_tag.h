// The emitter tag: makes the object that carries it, and what lies under it, a source.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

inline constexpr std::int32_t kVolumeTag = 1023165;

enum TagParameter : std::int32_t {
  TVOLUME_DENSITY = 1001,
  TVOLUME_TEMPERATURE = 1002,
  TVOLUME_FUEL = 1004,
  TVOLUME_THICKNESS = 1013,
  TVOLUME_EXPANSION = 1032,
  TVOLUME_DENSITY_MODE = 1039,
  TVOLUME_TEMPERATURE_MODE = 1040,
  TVOLUME_FUEL_MODE = 1041,
  TVOLUME_ENABLED = 1057,
  TVOLUME_BURN_MODE = 1066,
  TVOLUME_BURN = 1067,
};

/// Values of the modes.
enum TagMode : std::int32_t {
  TVOLUME_MODE_ADD = 1042,
  TVOLUME_MODE_SET = 1043,
};

bool register_volume_tag(host::HostServices& services);

}  // namespace nbx
