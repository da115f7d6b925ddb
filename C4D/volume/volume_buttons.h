// What the buttons in the panel of a volume object do.
#pragma once

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// OVOLUME_BAKE_FIRE: turns the colors of the glowing body into OVOLUME_FIRE_GRADIENT, none of
/// whose components is above 1, and OVOLUME_FIRE_GRADIENT_SCALE, and lets the fire use them.
/// Between its knots the gradient is off by at most a hundredth of the body's own brightness, or a
/// 4096th of its largest: both less than one sees. Colors beyond what floats hold leave all as it
/// was, with a log line.
void bake_fire(host::BaseObject& volume);

/// OVOLUME_MEASURE_RANGE: sets the range of the display to that of OVOLUME_DISPLAY_CHANNEL in the
/// frame that the volume shows at the document's time, for velocity over all three components.
/// Without such a frame, or with a damaged one, the range stays; a damaged one costs a log line.
void measure_range(host::BaseObject& volume, const std::shared_ptr<BFS>& store);

}  // namespace nbx
