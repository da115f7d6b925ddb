// The parameters of the emitter tag, which makes the object that carries it, and all below it, a
// source.
#pragma once

#include "host/interface/parameter_info.h"

namespace nbx {

inline constexpr std::int32_t kVolumeTag = 1023165;

enum TagParameter : std::int32_t {
  TVOLUME_DENSITY = 1001,
  TVOLUME_TEMPERATURE = 1002,
  TVOLUME_SOLID = 1003,
  TVOLUME_FUEL = 1004,
  TVOLUME_NORMAL_FORCE = 1005,
  TVOLUME_SELECTIONS = 1006,
  TVOLUME_THICKNESS = 1013,
  TVOLUME_FILL = 1020,
  TVOLUME_EXPANSION = 1032,
  TVOLUME_DIRECTION = 1035,
  TVOLUME_DENSITY_MODE = 1039,
  TVOLUME_TEMPERATURE_MODE = 1040,
  TVOLUME_FUEL_MODE = 1041,
  TVOLUME_VERSION = 1044,
  TVOLUME_VELOCITY_TRANSFER = 1046,
  TVOLUME_SHADER = 1047,
  TVOLUME_PARTICLE_MAP = 1050,
  TVOLUME_PARTICLE_CURVE = 1051,
  TVOLUME_ENABLED = 1057,
  TVOLUME_CORNER_WEIGHTS = 1058,
  TVOLUME_SURFACE_CHANNEL = 1059,
  TVOLUME_BURN_MODE = 1066,
  TVOLUME_BURN = 1067,
};

/// Values of the modes.
enum TagMode : std::int32_t {
  TVOLUME_MODE_ADD = 1042,
  TVOLUME_MODE_SET = 1043,
};

/// Values of TVOLUME_PARTICLE_MAP.
enum TagParticleMap : std::int32_t {
  TVOLUME_PARTICLE_NOTHING = 1052,
  TVOLUME_PARTICLE_AGE = 1053,
  TVOLUME_PARTICLE_SPEED = 1054,
  TVOLUME_PARTICLE_MASS = 1055,
  TVOLUME_PARTICLE_SIZE = 1056,
};

/// Values of TVOLUME_SURFACE_CHANNEL: channels of materials by number.
enum TagSurfaceChannel : std::int32_t {
  TVOLUME_SURFACE_NONE = 1060,
  TVOLUME_SURFACE_CHANNEL_1 = 1061,
  TVOLUME_SURFACE_CHANNEL_2 = 1062,
  TVOLUME_SURFACE_CHANNEL_7 = 1063,
  TVOLUME_SURFACE_CHANNEL_0 = 1064,
};

/// Version of the set of parameters, kept in TVOLUME_VERSION.
inline constexpr std::int32_t kTagParametersVersion = 6;

host::ClassDescription volume_tag_description();

}  // namespace nbx
