#include "C4D/volume/volume_info.h"

#include <QString>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/settings/channel_choice.h"
#include "C4D/settings/volume_cache.h"
#include "cache/slot_handle.h"
#include "util/format_size.h"

namespace nbx {

namespace {

/// "34x52x34 (0.057MV) at (10,0,10)": cells along the axes, millions of voxels, the lowest corner.
std::string grid_text(const SimFrame& frame) {
  Vec3i dims = frame.dims();
  if (dims == Vec3i())  // velocity alone
    for (const auto& [type, grid] : frame.grids)
      for (int axis = 0; axis < 3; ++axis) dims[axis] = std::max(dims[axis], grid.dims[axis]);
  const double voxels = 1.0 * dims[0] * dims[1] * dims[2];
  const Vec3i low = frame.box().lo;
  return QString("%1x%2x%3 (%4MV) at (%5,%6,%7)")
      .arg(dims[0])
      .arg(dims[1])
      .arg(dims[2])
      .arg(voxels / (1 << 20), 0, 'f', 3)
      .arg(low[0])
      .arg(low[1])
      .arg(low[2])
      .toStdString();
}

std::string bytes_text(const SimFrame& frame) {
  std::uint64_t cells = 0;
  for (const auto& [type, grid] : frame.grids)
    cells += std::uint64_t{1} * grid.dims[0] * grid.dims[1] * grid.dims[2];
  return format_size(cells * sizeof(float), 2);
}

std::string number_text(std::int64_t number) { return std::to_string(number) + "F"; }

/// The channel that a mark is about; OVOLUME_CHANNEL_NONE for other fields.
VolumeChannel marked_channel(std::int32_t id) {
  const struct {
    std::int32_t id;
    VolumeChannel channel;
  } marks[] = {{OVOLUME.INFO_VELOCITY, OVOLUME_CHANNEL_VELOCITY},
               {OVOLUME.INFO_DENSITY, OVOLUME_CHANNEL_DENSITY},
               {OVOLUME.INFO_TEMPERATURE, OVOLUME_CHANNEL_TEMPERATURE},
               {OVOLUME.INFO_FUEL, OVOLUME_CHANNEL_FUEL},
               {OVOLUME.INFO_BURN, OVOLUME_CHANNEL_BURN}};
  for (const auto& mark : marks)
    if (mark.id == id) return mark.channel;
  return OVOLUME_CHANNEL_NONE;
}

std::string text_field(std::int32_t id, const SimFrame& frame, int number) {
  if (id == OVOLUME.INFO_GRID) return grid_text(frame);
  if (id == OVOLUME.INFO_BYTES) return bytes_text(frame);
  return number_text(number);
}

}  // namespace

bool info_field(host::ParameterValue& value, std::int32_t id, const host::BaseObject& volume,
                const std::shared_ptr<BFS>& store) {
  if (id == OVOLUME.TIME_END) {
    if (ParameterReader(volume)(OVOLUME.TIME_MODE) == OVOLUME_TIME_OWN_RANGE) return false;
    value = time_range(volume).end;
    return true;
  }
  if (!OVOLUME.InfoParameters::contains(id)) return false;
  if (id == OVOLUME.INFO_FRAME_COUNT) {
    value = store ? number_text(std::ssize(store->frames())) : std::string();
    return true;
  }
  const int number = frame_at_time(volume, volume.GetDocument().GetTime());
  const SlotHandle frame = store ? SlotHandle(store, number, 0, true) : SlotHandle();
  if (const VolumeChannel channel = marked_channel(id); channel != OVOLUME_CHANNEL_NONE)
    value = frame && frame->grids.contains(channel_grids(channel).front());
  else
    value = frame ? text_field(id, *frame, number) : std::string();
  return true;
}

}  // namespace nbx
