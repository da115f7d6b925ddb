// The largest speed, and how far the velocity carries the gas: the length of a substep and the
// active box follow from them.
#pragma once

#include "math/field.h"
#include "math/int_box.h"

namespace nbx {

/// The largest speed over the interior cells, where each component is the larger of the two faces
/// of the cell. NaN is skipped.
float max_velocity(const Field<float>& U, const Field<float>& V, const Field<float>& W);

/// The cells of the center grid that the content of `box` can reach when the faces in it move by
/// d = s times their velocity, s = dt / dx. A face at index i of the axis sits at i - 0.5 and gets
/// no further than i - 0.5 + floor(d) down and i - 0.5 + ceil(d) up; cells that lie between the
/// outermost such places on each axis are reached. So a velocity of 0 returns `box`. `box` is
/// clipped to the center grid; if it is empty, so is the result.
void advection_buffer(IntBox& box_out, float s, const Field<float>& U, const Field<float>& V,
                      const Field<float>& W, const IntBox& box);

}  // namespace nbx
