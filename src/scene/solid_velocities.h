// The velocities of solids on the faces of the grid.
#pragma once

#include <cstdint>
#include <span>

#include "math/field.h"

namespace nbx {

/// Gives each face that touches solid the velocity, along its axis, of the vertex whose surface is
/// nearest. All other faces get 0, as does a solid face without a vertex. `phi` and `ids` are those
/// of post_process_voxelized; an id beyond `vertex_velocities` counts as none. In the outer planes
/// only outflow stays. Throws FieldDimensionMismatchException unless u, v, w are the faces of the
/// cells of phi.
void set_solid_velocities(Field<float>& u, Field<float>& v, Field<float>& w,
                          const Field<float>& phi, std::span<const std::int32_t> ids,
                          std::span<const Vec3f> vertex_velocities);

}  // namespace nbx
