#include "cache/grid_type.h"

#include <charconv>

namespace nbx {

namespace {

struct Name {
  GridType type;
  std::string_view name;
};

constexpr Name kNames[] = {
    {kGridDensity, "density"},
    {kGridTemperature, "temperature"},
    {kGridFuel, "fuel"},
    {kGridBurn, "burn"},
    {kGridVelocityX, "velocity_x"},
    {kGridVelocityY, "velocity_y"},
    {kGridVelocityZ, "velocity_z"},
    {kGridSolid, "solid"},
    {kGridBurned, "burned"},
    {kGridSecondVelocityX, "second_velocity_x"},
    {kGridSecondVelocityY, "second_velocity_y"},
    {kGridSecondVelocityZ, "second_velocity_z"},
};

constexpr std::string_view kNumbered = "type_";

}  // namespace

std::string grid_type_name(int gridType) {
  for (const Name& n : kNames)
    if (n.type == gridType) return std::string(n.name);
  return std::string(kNumbered) + std::to_string(gridType);
}

std::optional<int> grid_type_from_name(std::string_view name) {
  for (const Name& n : kNames)
    if (n.name == name) return n.type;
  if (!name.starts_with(kNumbered)) return {};
  int type = 0;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data() + kNumbered.size(), end, type);
  if (error != std::errc() || stop != end) return {};
  return type;
}

int staggered_axis(int gridType) {
  if (gridType >= kGridVelocityX && gridType <= kGridVelocityZ) return gridType - kGridVelocityX;
  if (gridType >= kGridSecondVelocityX && gridType <= kGridSecondVelocityZ)
    return gridType - kGridSecondVelocityX;
  return -1;
}

}  // namespace nbx
