// The exact Euclidean distance transform of a grid, line by line along each axis (P. F.
// Felzenszwalb and D. P. Huttenlocher, "Distance transforms of sampled functions", Theory of
// Computing 8, 2012).
#pragma once

#include "math/field.h"

namespace nbx {

/// Replaces each cell by its squared distance, in cells, to the nearest cell that contains 0. All
/// other cells must contain kFar, and keep it if no cell contains 0. Runs in parallel, with the
/// same bits for any number of threads. Exact for squared distances below 2^24. Throws
/// std::bad_alloc.
void square_distances(Field<float>& field);

inline constexpr float kFar = 1e18f;

}  // namespace nbx
