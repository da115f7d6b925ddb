#include "C4D/run/run_times.h"

#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"

namespace nbx {

RunTimes run_times(const host::BaseObject& volume) {
  const TimeRange range = time_range(volume);
  const Fraction length = frame_length(volume.GetDocument().GetFps());
  const FrameTime start{to_fraction(range.start), length};
  return {start, {to_fraction(range.end), length}, start};
}

}  // namespace nbx
