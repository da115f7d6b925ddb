// What the values of a channel mean to other programs.
#pragma once

#include <algorithm>

#include "cache/grid_type.h"
#include "math/field_pool.h"

namespace nbx {

/// The channel solid holds signed squared distances to solids, in squared voxels. Outside of solids
/// a run knows them only within the diagonal of a voxel. Cells farther away hold the largest float,
/// and files for other programs this number.
inline constexpr float kSolidBand = 3;

/// A copy of the channel solid with values of at most kSolidBand.
inline FieldHandle within_band(const Field<float>& solid) {
  FieldHandle limited = acquire_field(solid.dims());
  std::transform(solid.data(), solid.data() + solid.count(), limited->data(),
                 [](float v) { return std::min(v, kSolidBand); });
  return limited;
}

/// The unit of a channel's values, with lengths in meters or in host units. Empty for plain
/// numbers.
inline const char* value_unit(int grid_type, bool meters) {
  if (grid_type == kGridSolid) return "squared voxels";
  if (staggered_axis(grid_type) >= 0) return meters ? "m/s" : "cm/s";
  return "";
}

}  // namespace nbx
