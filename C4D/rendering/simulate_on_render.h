// Simulation during a render: a volume object that asks for it is simulated frame by frame, each
// frame just before it is drawn.
#pragma once

#include <span>

#include "C4D/rendering/host_volume.h"

namespace nbx {

/// When a sequence opens: finds the volumes to simulate. These ask for it, in a render of several
/// frames that overlaps their range, and their cache isn't locked. False if the render is refused,
/// which has been reported: two volumes share a cache, or it holds an earlier run that must stay.
[[nodiscard]] bool admit_simulations(std::span<HostVolume> volumes, host::BaseRender& render);

/// When a frame opens, before anybody holds a frame of a cache: brings the caches of these volumes
/// up to the document's frame, if it lies in their range. A run begins with the first such frame,
/// at the start of its range. A volume whose run fails isn't simulated any more: the user is
/// warned, and the render continues with the frames in its cache. Leaves the document evaluated at
/// its time. False if the user stops the render.
[[nodiscard]] bool simulate_up_to_frame(std::span<HostVolume> volumes, host::BaseRender& render);

/// When the sequence closes: ends the runs.
void end_simulations(std::span<HostVolume> volumes, host::BaseRender& render);

}  // namespace nbx
