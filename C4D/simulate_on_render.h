// Simulation that goes along with a render: a volume object that asks for it is simulated frame by
// frame, each frame just before it is drawn.
#pragma once

#include "C4D/host_volume.h"
#include "host/interface/video_post.h"

namespace nbx {

/// Brings the volume's cache up to the document's frame, if the volume asks for that, the render is
/// a sequence and the frame lies in the volume's range. The run starts with the first such frame
/// and lives in `volume` until end_simulation. Failures are logged, and the render goes on with the
/// frames that the cache has. Leaves the document evaluated at its time.
void simulate_up_to_frame(HostVolume& volume, host::BaseRender& render);

void end_simulation(HostVolume& volume);

}  // namespace nbx
