// The types of the grids in a frame, and their names for the user.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nbx {

enum GridType : int {
  kGridDensity = 2,
  kGridTemperature = 3,
  kGridFuel = 4,
  kGridVelocityX = 5,
  kGridVelocityY = 6,
  kGridVelocityZ = 7,
  kGridBurn = 24,
  kGridSolid = 25,
  kGridBurned = 26,  // only in states
  kGridSecondVelocityX = 33,
  kGridSecondVelocityY = 34,
  kGridSecondVelocityZ = 35,
};

/// "density", "velocity_x" ...; "type_9" for a number without a name.
std::string grid_type_name(int gridType);
/// The inverse of grid_type_name. Empty for any other name.
std::optional<int> grid_type_from_name(std::string_view name);

/// The axis along which a grid of this type is staggered and has one more cell; -1 for a grid of
/// cell centers.
int staggered_axis(int gridType);

}  // namespace nbx
