// What the solver for scattered light starts from: the gas on the grid of light, and the light that
// it gets from lamps and fire.
#pragma once

#include "render/light/sweep_grid.h"
#include "render/render_volume.h"
#include "render/scattered_light_field.h"

namespace nbx {

/// A copy of the volume whose channels hold the displaced values, so that they can be read where
/// they are. Without displacement its fields are those of the volume.
RenderVolume bake_displacement(const RenderVolume& volume);

/// Extinction and scattering of each cell, without displacement.
SweepMedium scatter_medium(const RenderVolume& volume, const Vec3i& dims,
                           const ScatteredLightParams& params, int threads);

/// Writes the light of all lamps at each cell to `direct`, and that and the fire's, by their
/// weights, to `source`. `still` is the volume without displacement; the lights are asked for the
/// volume itself, which may be of a type derived from RenderVolume that they know. False if
/// `progress` broke it off.
bool initial_light(Field3& direct, Field3& source, const RenderVolume& still,
                   const RenderVolume& volume, Lighting& lighting,
                   const ScatteredLightParams& params, int threads,
                   const ProgressCallback& progress);

}  // namespace nbx
