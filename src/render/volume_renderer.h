// The ray marcher: light and transmittance along a ray through all volumes of a render, by the
// emission and absorption model (N. Max, "Optical models for direct volume rendering", IEEE
// Transactions on Visualization and Computer Graphics 1(2), 1995). Where volumes overlap, all of
// them are summed at every sample, and steps are those of the finest.
//
// All threads of a render call at once. With up to four volumes a ray allocates nothing; it locks
// nothing, and its result depends on its record alone.
#pragma once

#include <memory>
#include <vector>

#include "render/render_volume.h"

namespace nbx {

/// Where a view from the preview's camera starts.
struct PreviewCamera {
  Vec3d position{0, 1, 2}, direction{0, -0.4472135954999579, -0.8944271909999159}, up{0, 1, 0};
  double near = 0.05;
  double pixelSize = 0.00035010376910485484;   // 2 tan(35 degrees) near / 200
  double half_width = 100, half_height = 100;  // in pixels
};

struct VolumeRenderer {
  double cutoff = 0.0001;  // transmittance below which a ray plays Russian roulette; 0: never
  PreviewCamera camera;
  bool active = true;               // any volume shows something
  bool adaptive = true;             // steps follow the signal
  float adaptiveThreshold = 1e-4f;  // contribution of a step above which steps are halved
  std::vector<std::shared_ptr<RenderVolume>> volumes;  // in the order of the scene
};

/// Adds to `radiance` and multiplies `transmittance`. False, and nothing done, if the ray meets
/// no volume.
bool traceVolumes(const VolumeRenderer& renderer, RayRecord& ray);

/// The same for the transmittance alone.
bool traceShadow(const VolumeRenderer& renderer, RayRecord& ray);

}  // namespace nbx
