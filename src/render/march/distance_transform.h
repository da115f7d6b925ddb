// The exact Euclidean distance transform of a grid, line by line along each axis (P. F.
// Felzenszwalb and D. P. Huttenlocher, "Distance transforms of sampled functions", Theory of
// Computing 8, 2012).
#pragma once

#include "math/field.h"

namespace nbx {

/// Replaces each cell by its squared distance, in cells, from the nearest cell that held 0. Other
/// cells come in as kFar, and stay so if there is no 0 at all. In parallel, with the same bits for
/// any number of threads; exact where squared distances are below 2^24. Throws std::bad_alloc.
void square_distances(Field<float>& field);

inline constexpr float kFar = 1e18f;

}  // namespace nbx
