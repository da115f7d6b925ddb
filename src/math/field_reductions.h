// Reductions of whole fields. All give the same bits for any number of threads.
#pragma once

#include "math/field.h"
#include "math/int_box.h"

namespace nbx {

/// The sum of all elements in double. Threads sum blocks of a fixed size; then the block sums are
/// added in order.
double sum(const Field<float>& x);
/// The largest magnitude; 0 for an empty field. NaN if any element is NaN.
float infnorm(const Field<float>& x);
/// Smallest and largest element; 0 for an empty field.
float min(const Field<float>& x);
float max(const Field<float>& x);
/// The smallest box of cells with |value| > threshold, in indices of the field.
IntBox min_bbox(const Field<float>& x, float threshold);

}  // namespace nbx
