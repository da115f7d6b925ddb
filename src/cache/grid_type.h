// The types of the grids in a frame, and their names for the user.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nbx {

/// Types 8, 9 and 27 to 32 are read where a frame has them. No frame of a run has them; the states
/// of an up-resolution run hold 8, 9 and 27.
enum GridType : int {
  kGridDensity = 2,
  kGridTemperature = 3,
  kGridFuel = 4,
  kGridVelocityX = 5,
  kGridVelocityY = 6,
  kGridVelocityZ = 7,
  kGridCoordinateX = 8,  // where the gas was: coordinates that travel with it
  kGridCoordinateY = 9,
  kGridBurn = 24,
  kGridSolid = 25,
  kGridBurned = 26,  // only in states
  kGridCoordinateZ = 27,
  kGridFree28 = 28,  // no meaning; the viewport shows what other programs put there
  kGridFree29 = 29,
  kGridFree30 = 30,
  kGridFree31 = 31,
  kGridCoordinateAge = 32,  // age of the coordinates
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
