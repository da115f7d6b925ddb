// Resampling to a grid that is `factor` times finer, and test ramps. The caller sizes `dst`; if it
// has the dimensions of `src`, the operators copy.
#pragma once

#include "math/field.h"

namespace nbx {

/// A cell-centered field, trilinear. The ghost layer of `dst` isn't changed.
void scale_up_center(Field<float>& dst, const Field<float>& src, int factor);

/// One staggered component. All fine faces that make up a coarse face get its value; between them,
/// along the normal, values are interpolated. The flux through every coarse face stays exact, so a
/// divergence-free field stays divergence-free.
void scale_up_west(Field<float>& dst, const Field<float>& src, int factor);
void scale_up_south(Field<float>& dst, const Field<float>& src, int factor);
void scale_up_low(Field<float>& dst, const Field<float>& src, int factor);

/// Fills the interior with a linear ramp from 0 to 1 along x, y or z (mode 0, 1, 2) or with the sum
/// of the three ramps weighted by `direction` (mode 3). Each ghost plane copies its inner neighbor.
void create_gradient_field(Field<float>& field, int mode, const Vec3f& direction);

}  // namespace nbx
