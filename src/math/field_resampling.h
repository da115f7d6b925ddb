// Resampling to a grid `factor` times finer, and test ramps. `dst` has its dimensions already;
// where they equal those of `src` the operators copy.
#pragma once

#include "math/field.h"

namespace nbx {

/// Cell-centered field, trilinear; the ghost layer of `dst` stays as it was.
void scale_up_center(Field<float>& dst, const Field<float>& src, int factor);

/// One staggered component. Each coarse face value goes to all fine faces that make up the coarse
/// face, and is interpolated along the normal between them: the flux through every coarse face
/// stays exact, so a divergence-free field stays so.
void scale_up_west(Field<float>& dst, const Field<float>& src, int factor);
void scale_up_south(Field<float>& dst, const Field<float>& src, int factor);
void scale_up_low(Field<float>& dst, const Field<float>& src, int factor);

/// Fills the interior with a linear ramp from 0 to 1 along x, y or z (mode 0, 1, 2) or with the sum
/// of the three ramps weighted by `direction` (mode 3); each ghost plane takes its inner neighbor.
void create_gradient_field(Field<float>& field, int mode, const Vec3f& direction);

}  // namespace nbx
