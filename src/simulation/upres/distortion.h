// How far a map of space is from one that keeps lengths, by the eigenvalues of its Jacobian.
#pragma once

#include "math/field.h"

namespace nbx {

/// Rows are the gradients of the three components.
using Jacobian = std::array<std::array<double, 3>, 3>;

/// max(|largest|, 1 / |smallest eigenvalue|): 1 for a rotation or for rest. With a largest
/// magnitude below 0.001 it is 10.
double distortion(const Jacobian& J);

/// The Jacobian in an interior cell of three fields. Of the differences to both neighbors and
/// across them, each derivative takes the smallest, so that one bad neighbor doesn't count.
Jacobian smallest_differences(const std::array<const Field<float>*, 3>& map, std::size_t cell);

}  // namespace nbx
