// Vorticity confinement (Steinhoff and Underhill, 1994; Fedkiw, Stam and Jensen, 2001): restores
// the small swirls that numerical dissipation removes, by a force that pushes the gas around places
// of large vorticity. For a step of length dt and a strength eps:
//
//     w = curl u,  N = grad |w| / |grad |w||,  u += dt * eps * dx * (N x w)
//
// that is VelocityCurl, VorticityConfinementForce with the scale eps * dx and
// add_center_force_to_mac with the factor dt / 2. All run in parallel over z planes; operands whose
// dimensions don't fit throw FieldDimensionMismatchException.
#pragma once

#include "math/mfield.h"

namespace nbx {

/// The vorticity of (U, V, W) at cell centers and its magnitude, by central differences of the
/// cells' mean velocities in the interior; each ghost plane takes its inner neighbor. A grid
/// without interior cells gets 0.
void VelocityCurl(Field<float>& wx, Field<float>& wy, Field<float>& wz, Field<float>& mag,
                  const Field<float>& U, const Field<float>& V, const Field<float>& W, float dx);
void m_velocity_curl(MField& wx, MField& wy, MField& wz, MField& mag, MField& U, MField& V,
                     MField& W, float dx);

/// Replaces the vorticity (wx, wy, wz) of magnitude `mag` by the force (N x w) * scale. It is 0
/// where the gradient of `mag` vanishes, and in the two outermost layers of cells.
void VorticityConfinementForce(Field<float>& wx, Field<float>& wy, Field<float>& wz,
                               const Field<float>& mag, float scale);
void m_vorticity_confinement_force(MField& wx, MField& wy, MField& wz, MField& mag, float scale);

/// Adds a force at cell centers to the faces: each face between cells 1 .. n-3 gets the sum of its
/// two cells' force along its axis times c. A grid with fewer than 5 cells on an axis is left
/// alone.
void add_center_force_to_mac(Field<float>& U, Field<float>& V, Field<float>& W,
                             const Field<float>& fx, const Field<float>& fy, const Field<float>& fz,
                             float c);
void m_add_center_force_to_mac(MField& U, MField& V, MField& W, MField& fx, MField& fy, MField& fz,
                               float c);

}  // namespace nbx
