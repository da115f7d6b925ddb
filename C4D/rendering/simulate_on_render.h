// Simulation that goes along with a render: a volume object that asks for it is simulated frame by
// frame, each frame just before it is drawn.
#pragma once

#include <span>

#include "C4D/rendering/host_volume.h"
#include "host/interface/video_post.h"

namespace nbx {

/// While a sequence opens: finds the volumes that are to be simulated. Those are the ones that ask
/// for it, in a render of several frames that meets their range, unless their cache is locked.
/// False if the render is refused, which the user has been told: a cache belongs to two volumes, or
/// holds an earlier run that nobody allowed to overwrite.
[[nodiscard]] bool admit_simulations(std::span<HostVolume> volumes, host::BaseRender& render);

/// While a frame opens and nobody holds a frame of a cache: brings the caches of those volumes up
/// to the document's frame, where it lies in their range. A run starts with the first such frame,
/// at the start of its range. A volume whose run can't start or fails isn't simulated any more, and
/// the render goes on with what its cache has; the user is warned. Leaves the document evaluated at
/// its time. False if the user broke it off.
[[nodiscard]] bool simulate_up_to_frame(std::span<HostVolume> volumes, host::BaseRender& render);

/// While the sequence closes: ends the runs.
void end_simulations(std::span<HostVolume> volumes, host::BaseRender& render);

}  // namespace nbx
