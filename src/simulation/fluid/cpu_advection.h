// The loops of advection on the CPU. Each choice of tracer, lookup and sampling has a loop of its
// own, so that no cell branches on them. Interior cells of the destination only; a field with fewer
// than 3 cells on an axis is left alone.
#pragma once

#include "math/field.h"
#include "math/lanes/near_marks.h"
#include "simulation/fluid/advection.h"

namespace nbx {

/// Fills one cache with the traced position of every interior sample of a field of `dims`:
/// trace_back with +dt if `forward`, else trace_fwd with -dt.
void cpu_cache_tracer(const AdvectionParams& params, bool forward, const Vec3i& dims);

/// What a stage can leave out.
struct Gas {
  NearMarks near{};                  // of the field that it samples
  const BlockSet* blocks = nullptr;  // the blocks to write; null: all
};

/// dst = src sampled where each cell's content came from. `dst` has the dimensions of `src`. Traces
/// what the cache lacks. The border of `dst` isn't written.
void cpu_advect_sl(Field<float>& dst, const Field<float>& src, AdvectionParams& params,
                   const Gas& gas = {});

/// The MacCormack correction of `hat`. A cell whose traces leave the grid, or whose corrected value
/// lies outside of the 8 values of `src` around its origin, keeps `hat`. The border of `dst` isn't
/// written.
void cpu_maccormack(Field<float>& dst, const Field<float>& src, const Field<float>& hat,
                    AdvectionParams& params, const Gas& gas = {});

}  // namespace nbx
