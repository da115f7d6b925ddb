// Separable filters. The result stands in `field`; `tmp` is scratch of the same dimensions, checked
// axis by axis. Windows are cut at the ends of a line and not renormalised, so values fade towards
// the borders.
#pragma once

#include "math/field.h"

namespace nbx {

/// Box filter of a fractional radius in cells. A radius not above 0 is logged and does nothing.
void box_blur3D(Field<float>& field, Field<float>& tmp, double radius);

/// Convolution with a symmetric kernel: `filter` holds its half along x, weight at distance d is
/// filter[|d|]. Fewer than 2 elements are logged and do nothing.
void convolve3D(const Field<float>& filter, Field<float>& field, Field<float>& tmp);

}  // namespace nbx
