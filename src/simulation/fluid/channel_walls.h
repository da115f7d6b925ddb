// The walls of the domain, as the channels of the gas see them.
#pragma once

#include <array>

#include "math/field.h"
#include "simulation/domain.h"

namespace nbx {

/// The faces of the active box that no gas crosses: x-, x+, y-, y+, z-, z+. With wind there are
/// none.
std::array<bool, 6> channel_walls(const Domain& domain);

/// Ghost cells beyond a wall take the value of the cell inside, so that samples beside the wall
/// see gas there and no empty air. Other ghost cells keep their value.
void extend_to_walls(Field<float>& channel, const Domain& domain);

}  // namespace nbx
