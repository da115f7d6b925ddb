// How fast the velocity is and how far it carries: what the length of a step and the size of the
// adaptive container are planned from.
#pragma once

#include "math/field.h"
#include "math/int_box.h"

namespace nbx {

/// The largest speed over the interior cells, where a cell's component is the larger of its two
/// faces. NaN is passed over.
float max_velocity(const Field<float>& U, const Field<float>& V, const Field<float>& W);

/// The cells of the center grid that the content of `box` can reach when the faces in it move by
/// d = s times their velocity, s = dt / dx. A face at index i of the axis sits at i - 0.5 and gets
/// no further than i - 0.5 + floor(d) down and i - 0.5 + ceil(d) up; cells that lie between the
/// outermost such places on each axis are reached. So a velocity of 0 gives `box` back. `box` is
/// cut to the center grid; an empty one gives an empty one.
void advection_buffer(IntBox& box_out, float s, const Field<float>& U, const Field<float>& V,
                      const Field<float>& W, const IntBox& box);

}  // namespace nbx
