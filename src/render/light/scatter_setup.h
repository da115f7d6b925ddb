// Input of the solver for scattered light: the gas on the grid of light, and the light that the gas
// receives from lights and fire.
#pragma once

#include "render/light/sweep_grid.h"
#include "render/render_volume.h"
#include "render/scattered_light_field.h"

namespace nbx {

/// A copy of the volume whose channels hold the displaced values, so that they can be read without
/// displacement. If nothing is displaced by velocity, the copy shares its fields with the volume.
RenderVolume bake_displacement(const RenderVolume& volume);

/// Extinction and scattering of each cell. The volume's displacement must be baked.
SweepMedium scatter_medium(const RenderVolume& volume, const Vec3i& dims,
                           const ScatteredLightParams& params, int threads);

/// Writes the light that arrives at each cell from all lights to `direct`. Writes the weighted sum
/// of this light and the light of the fire to `source`. The volume's displacement must be baked.
/// False if `progress` canceled the work.
bool initial_light(Field3& direct, Field3& source, const RenderVolume& volume, Lighting& lighting,
                   const ScatteredLightParams& params, int threads,
                   const ProgressCallback& progress);

}  // namespace nbx
