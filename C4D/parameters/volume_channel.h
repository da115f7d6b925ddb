// The channels that parameters of the volume object select.
#pragma once

#include "C4D/parameters/parameter_group.h"

namespace nbx {

enum VolumeChannel : std::int32_t {
  OVOLUME_CHANNEL_VELOCITY = 1096,
  OVOLUME_CHANNEL_DENSITY = 1097,
  OVOLUME_CHANNEL_TEMPERATURE = 1098,
  OVOLUME_CHANNEL_FUEL = 1099,
  OVOLUME_CHANNEL_BURN = 1100,
  OVOLUME_CHANNEL_SOLID = 1144,
  OVOLUME_CHANNEL_NONE = 1185,
  OVOLUME_CHANNEL_RAMP_X = 1212,  ///< ramps along an axis of the frame, for shaders
  OVOLUME_CHANNEL_RAMP_Y = 1213,
  OVOLUME_CHANNEL_RAMP_Z = 1214,
  OVOLUME_CHANNEL_GRID_28 = 1314,  ///< grids by their type, for the viewport
  OVOLUME_CHANNEL_GRID_8 = 1327,
  OVOLUME_CHANNEL_GRID_9 = 1328,
  OVOLUME_CHANNEL_GRID_27 = 1329,
  OVOLUME_CHANNEL_GRID_29 = 1330,
  OVOLUME_CHANNEL_GRID_30 = 1331,
  OVOLUME_CHANNEL_GRID_31 = 1332,
  OVOLUME_CHANNEL_VELOCITY_X = 1404,
  OVOLUME_CHANNEL_VELOCITY_Y = 1405,
  OVOLUME_CHANNEL_VELOCITY_Z = 1406,
};

/// A part of the volume object's table.
class VolumeGroup : public ParameterGroup {
 protected:
  static constexpr const char* kPartPerFrame = "fraction per frame";
  static constexpr const char* kDiffusionUnit = "100 units^2/s";

  explicit VolumeGroup(Changes changes) : ParameterGroup("OVOLUME", changes) {}

  /// Selects a simulated channel, or one of `more`.
  Line<VolumeChannel> channel(std::int32_t id, const char* name, VolumeChannel value,
                              const char* help, const std::vector<host::CycleEntry>& more = {}) {
    std::vector<host::CycleEntry> entries{{OVOLUME_CHANNEL_NONE, "none"},
                                          {OVOLUME_CHANNEL_DENSITY, "density"},
                                          {OVOLUME_CHANNEL_TEMPERATURE, "temperature"},
                                          {OVOLUME_CHANNEL_FUEL, "fuel"},
                                          {OVOLUME_CHANNEL_BURN, "burn"}};
    entries.insert(entries.end(), more.begin(), more.end());
    return cycle(id, name, value, std::move(entries), help);
  }

  static Condition chosen(const Parameter<VolumeChannel>& parameter) {
    return is_not(parameter, OVOLUME_CHANNEL_NONE);
  }
};

}  // namespace nbx
