// Separable filters. The result stands in `field`; `tmp` is scratch of the same dimensions, checked
// axis by axis. Windows are cut at the ends of a line and not renormalized, so values fade towards
// the borders.
#pragma once

#include "math/field.h"

namespace nbx {

/// Box filter of a fractional radius in cells: constant weights w0 with two smaller ones, w1 and
/// w2, at each end, which add up to 1. A window cut by the end of the line has the small weights at
/// its cut end too; one of three cells has w2 w1 w2, a shorter one w2 alone. The cost grows with
/// the logarithm of the radius. A radius not above 0 is logged and does nothing.
void box_blur3D(Field<float>& field, Field<float>& tmp, double radius);

/// Convolution with a symmetric kernel: `filter` holds its half along x, weight at distance d is
/// filter[|d|]. Fewer than 2 elements are logged and do nothing.
void convolve3D(const Field<float>& filter, Field<float>& field, Field<float>& tmp);

}  // namespace nbx
