// What the buttons in the panel of a volume object do.
#pragma once

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// OVOLUME.BAKE_FIRE: converts the colors of the black body to OVOLUME.FIRE_GRADIENT, with
/// components up to 1, and OVOLUME.FIRE_GRADIENT_SCALE, and switches the fire to them. Between its
/// knots the gradient's error is at most a hundredth of the color's brightness, or a 4096th of the
/// largest: both below the visible difference. Colors too bright for floats change nothing but the
/// log.
void bake_fire(host::BaseObject& volume);

/// OVOLUME.MEASURE_RANGE: sets the range of the display to the values of OVOLUME.DISPLAY_CHANNEL in
/// the frame at the document's time; for velocity, those of all three components. The range stays
/// if the frame is missing or damaged; damage is logged.
void measure_range(host::BaseObject& volume, const std::shared_ptr<BFS>& store);

}  // namespace nbx
