// Discrete operators on the staggered grid (Harlow and Welch, 1965), and the boundaries: ghost
// layer, walls, solids. `phi`, where given, is the signed squared distance to the nearest solid in
// squared voxels: positive in fluid, zero or negative in solid. Only its sign is tested.
#pragma once

#include "math/field.h"
#include "math/mfield.h"
#include "simulation/domain.h"

namespace nbx {

/// rhs = -div(U, V, W) in the interior cells, 0 in solid cells and in the six outer planes.
void NegDivergence(Field<float>& rhs, const Field<float>& U, const Field<float>& V,
                   const Field<float>& W, const Field<float>* phi, double inv_dx);

/// (U, V, W) -= grad p * dx: p comes from the unit-grid Laplacian. With `phi`, faces with solid on
/// either side keep their value.
void subtract_pressure_gradient(Field<float>& U, Field<float>& V, Field<float>& W,
                                const Field<float>& p, double dx, const Field<float>* phi);

/// The boundary of one velocity component. With wind, all outer planes have its velocity. Else
/// walls on the closed faces, copies in the ghost planes, only outflow through open faces, 0 on
/// edges and corners.
void VelocityBoundaryU(Field<float>& U, const Domain& domain);
void VelocityBoundaryV(Field<float>& V, const Domain& domain);
void VelocityBoundaryW(Field<float>& W, const Domain& domain);
void m_velocity_boundary(int axis, MField& component, const Domain& domain);

/// Writes `value` into the planes at index `layer` and n - 1 - layer of each axis.
void set_border(Field<float>& f, float value, int layer = 0);
void m_set_border(MField& f, float value);

/// Each outer plane takes its inner neighbor, in order x low, x high, y, z.
void clamp_border(Field<float>& f);

/// Faces next to solid take the solid's velocity.
void constrainBoundaryVelocityT(const Field<float>& phi, const Field<float>& Us,
                                const Field<float>& Vs, const Field<float>& Ws, Field<float>& U,
                                Field<float>& V, Field<float>& W);

/// Fills the cells inside of solids with `value`; with `extrapolate`, with the channel's mean at
/// the nearest point of the surface, where fluid is near enough.
void set_channel_inside_solid(const Field<float>& phi, Field<float>& channel, bool extrapolate,
                              float value);
void m_set_channel_inside_solid(MField& phi, MField& channel, bool extrapolate, float value);

/// Adds a centered scalar, clamped to [0, 1], to the faces: each face gets the sum of its two cells
/// times the coefficient of its axis. A component whose coefficient is 0 isn't touched. This is how
/// buoyancy acts.
void add_center_to_mac(Field<float>& U, Field<float>& V, Field<float>& W, const Field<float>& f,
                       float a, float b, float c);
void m_add_center_to_mac(MField& U, MField& V, MField& W, MField& f, float a, float b, float c);

}  // namespace nbx
