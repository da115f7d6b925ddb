#include "C4D/settings/channel_choice.h"

#include <algorithm>

#include "cache/grid_type.h"
#include "render/prepare_volume.h"
#include "simulation/channel_key.h"

namespace nbx {

namespace {

struct Row {
  VolumeChannel choice;
  ChannelKey key = kNoChannel;  // of a channel that may drive others
  int grid = kNoGrid;           // type of the first grid, or a ramp
  int grids = 1;                // of consecutive types
};

constexpr Row kRows[] = {
    {OVOLUME_CHANNEL_NONE},
    {OVOLUME_CHANNEL_DENSITY, kDensity, kGridDensity},
    {OVOLUME_CHANNEL_TEMPERATURE, kTemperature, kGridTemperature},
    {OVOLUME_CHANNEL_FUEL, kFuel, kGridFuel},
    {OVOLUME_CHANNEL_BURN, kBurn, kGridBurn},
    {OVOLUME_CHANNEL_VELOCITY, kNoChannel, kGridVelocityX, 3},
    {OVOLUME_CHANNEL_VELOCITY_X, kNoChannel, kGridVelocityX},
    {OVOLUME_CHANNEL_VELOCITY_Y, kNoChannel, kGridVelocityY},
    {OVOLUME_CHANNEL_VELOCITY_Z, kNoChannel, kGridVelocityZ},
    {OVOLUME_CHANNEL_SOLID, kNoChannel, kGridSolid},
    {OVOLUME_CHANNEL_RAMP_X, kNoChannel, kRampX},
    {OVOLUME_CHANNEL_RAMP_Y, kNoChannel, kRampY},
    {OVOLUME_CHANNEL_RAMP_Z, kNoChannel, kRampZ},
    {OVOLUME_CHANNEL_GRID_8, kNoChannel, kGridCoordinateX},
    {OVOLUME_CHANNEL_GRID_9, kNoChannel, kGridCoordinateY},
    {OVOLUME_CHANNEL_GRID_27, kNoChannel, kGridCoordinateZ},
    {OVOLUME_CHANNEL_GRID_28, kNoChannel, kGridFree28},
    {OVOLUME_CHANNEL_GRID_29, kNoChannel, kGridFree29},
    {OVOLUME_CHANNEL_GRID_30, kNoChannel, kGridFree30},
    {OVOLUME_CHANNEL_GRID_31, kNoChannel, kGridFree31},
};

const Row& row_of(VolumeChannel choice) {
  const auto* found = std::ranges::find(kRows, choice, &Row::choice);
  return found == std::end(kRows) ? kRows[0] : *found;
}

}  // namespace

int channel_key(VolumeChannel choice) { return row_of(choice).key; }

std::vector<int> channel_grids(VolumeChannel choice) {
  std::vector<int> types;
  const Row& row = row_of(choice);
  for (int n = 0; n < row.grids && row.grid > kNoGrid; ++n) types.push_back(row.grid + n);
  return types;
}

int shader_channel(VolumeChannel choice) { return row_of(choice).grid; }

}  // namespace nbx
