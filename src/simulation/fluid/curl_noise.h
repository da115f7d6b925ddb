// Adds detail without divergence to a velocity: the curl of a vector potential, as in R. Bridson,
// J. Hourihan and M. Nordenstam, "Curl-noise for procedural fluid flow", ACM Transactions on
// Graphics 26(3), 2007.
#pragma once

#include "math/mfield.h"

namespace nbx {

/// Adds scale * curl(P) to the interior faces. One field serves as all three components of the
/// potential, each mirrored along its own axis, Px(i, j, k) = psi(nx-1-i, j, k) and so on, with Px
/// on the cells' x edges. With `map`, a potential is scaled by the mean of the four cells around
/// its edge: the detail fades in and out with the map and stays free of divergence.
///
/// The faces on the far side of the last interior cells are then set so that those cells have no
/// divergence. Center fields must fit to the faces, else FieldDimensionMismatchException.
void add_curl_of_scaled(Field<float>& U, Field<float>& V, Field<float>& W, const Field<float>& psi,
                        const Field<float>* map, float scale);
void m_add_curl_of_scaled(MField& U, MField& V, MField& W, MField& psi, MField* map, float scale);

}  // namespace nbx
