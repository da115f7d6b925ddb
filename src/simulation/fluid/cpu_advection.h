// The loops of advection on the CPU. Each choice of tracer, lookup and sampling has a loop of its
// own, so that no cell branches on them. Interior cells of the destination only; a field with fewer
// than 3 cells on an axis is left alone.
#pragma once

#include "math/field.h"
#include "simulation/fluid/advection.h"

namespace nbx {

/// Fills one cache with the traced position of every interior sample of a field of `dims`:
/// trace_back with +dt if `forward`, else trace_fwd with -dt.
void cpu_cache_tracer(const AdvectionParams& params, bool forward, const Vec3i& dims);

/// dst = src sampled where each cell's content came from. `dst` has the dimensions of `src`. A
/// present cache must be fresh. The border of `dst` isn't written.
void cpu_advect_sl(Field<float>& dst, const Field<float>& src, const AdvectionParams& params);

/// The MacCormack correction of `hat`. A cell whose traces leave the grid, or whose corrected value
/// lies outside of the 8 values of `src` around its origin, keeps `hat`. The border of `dst` is 0.
void cpu_maccormack(Field<float>& dst, const Field<float>& src, const Field<float>& hat,
                    const AdvectionParams& params);

}  // namespace nbx
