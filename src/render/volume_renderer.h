// The ray marcher: light and transmittance along a ray through all volumes of a render, by the
// emission and absorption model (N. Max, "Optical models for direct volume rendering", IEEE
// Transactions on Visualization and Computer Graphics 1(2), 1995). Where volumes overlap, each
// sample is the sum of all of them, and the volume with the smallest steps sets the step length.
//
// All threads of a render may call at once. A ray takes no lock, and it allocates nothing unless
// there are more than four volumes. Its result depends on its record alone.
#pragma once

#include <memory>
#include <vector>

#include "render/render_volume.h"

namespace nbx {

struct VolumeRenderer {
  double cutoff = 0.0001;           // Russian roulette ends rays of lower transmittance; 0: never
  bool active = true;               // at least one volume shows something
  bool adaptive = true;             // view rays adapt their steps to the signal
  float adaptiveThreshold = 1e-4f;  // a step that contributes more is halved
  std::vector<std::shared_ptr<RenderVolume>> volumes;  // in the order of the scene
};

/// Adds to `radiance` and multiplies `transmittance`. False, with the ray unchanged, if it meets no
/// volume.
bool traceVolumes(const VolumeRenderer& renderer, RayRecord& ray);

/// The same for the transmittance alone.
bool traceShadow(const VolumeRenderer& renderer, RayRecord& ray);

}  // namespace nbx
