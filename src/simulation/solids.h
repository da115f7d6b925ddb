// The solids of a substep, shared by the systems that respect them.
#pragma once

#include <memory>

#include "math/mfield.h"

namespace nbx {

/// `phi` is the signed squared distance to the nearest solid surface in squared voxels, at cell
/// centers: positive in fluid, zero or negative in solid. `u`, `v`, `w` are the velocities of the
/// solids on the faces. No `phi` means no solids.
struct Solids {
  std::shared_ptr<MField> phi, u, v, w;
};

}  // namespace nbx
