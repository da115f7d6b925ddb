// Separable filters, in place. `tmp` is scratch of the same dimensions, checked axis by axis.
// Windows are cut at the ends of a line and not renormalized, so values fade towards the borders.
#pragma once

#include "math/field.h"

namespace nbx {

/// Box filter with a fractional radius in cells: constant weights w0, with two smaller ones, w1 and
/// w2, at each end, that add up to 1. A window that the end of the line cuts has the small weights
/// at its cut end too; a window of three cells has w2 w1 w2, a shorter one only w2. The cost grows
/// with the logarithm of the radius. A radius of 0 or less is logged and does nothing.
void box_blur3D(Field<float>& field, Field<float>& tmp, double radius);

/// Convolution with a symmetric kernel. `filter` holds one half of it along x: the weight at
/// distance d is filter[|d|]. A filter of fewer than 2 elements is logged and does nothing.
void convolve3D(const Field<float>& filter, Field<float>& field, Field<float>& tmp);

}  // namespace nbx
