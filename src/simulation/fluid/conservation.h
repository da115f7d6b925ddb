// What keeps the total of a channel in a semi-Lagrangian step. Such a step moves values, not
// amounts, so the sum over the grid drifts. A transport that conserves does three things more:
//
//  - It knows what may leave: the gas that the velocity carries through open faces.
//  - It thins gas where the flow expands and thickens it where the flow contracts, as the
//    conservative form of the transport equation does.
//  - It corrects the rest of the defect afterwards, where the field varies and within the values
//    around each cell. Priestley, A Quasi-Conservative Version of the Semi-Lagrangian Advection
//    Scheme, 1993, and Bermejo and Conde, A Conservative Quasi-Monotone Semi-Lagrangian Scheme,
//    2002, correct in this manner; they weight by the difference of two interpolations.
//
// All sums have the same bits for any number of threads. Ghost cells don't count.
#pragma once

#include "math/field.h"
#include "simulation/fluid/advection.h"

namespace nbx {

/// The velocity of a transport: components on faces, and what turns them into voxels, dt / dx.
struct Sweep {
  const Field<float>&U, &V, &W;
  double step;
};

/// The amount that leaves through the faces that are no walls: the gas in the column that each face
/// of a boundary cell sweeps.
double outflow(const Field<float>& channel, const Sweep& sweep, const Domain& domain);

/// Divides by the volume that a cell of gas takes after the step, 1 + d with the divergence d.
/// Where gas contracts, it multiplies by 1 - d, which stays finite. Returns the total before.
double thin_by_expansion(Field<float>& channel, const Sweep& sweep);

/// dst = moved, corrected so that its total becomes `total`:
///
///     dst = moved + a min(highest - moved, moved)    or    dst = moved - a (moved - lowest)
///
/// with one a in [0, 1] for all cells, and the extremes over the cell and its six neighbors. So no
/// cell leaves the range around it, none turns negative, and empty air stays empty. Where a = 1
/// isn't enough, a part of the defect stays. Writes ghost cells: those of `moved` become copies,
/// those of `dst` 0.
void correct_total(Field<float>& dst, Field<float>& moved, double total);

/// field = its transport by `advect`, with its total kept but for the outflow.
void advect_conserving(MField& field, AdvectionParams& params);

/// Empties the cells of `field` inside of solids, where `phi` <= 0. What `own` has there, the gas
/// without the sources of this step, returns to the gas outside. `own` is used up.
void displace_by_solids(MField& field, MField& own, MField& phi);

}  // namespace nbx
