// Transport of a field along the velocity: a semi-Lagrangian step (Stam, Stable Fluids, 1999)
// followed by a MacCormack correction with a limiter (Selle, Fedkiw, Kim, Liu, Rossignac, An
// Unconditionally Stable MacCormack Method, 2008). One operation serves the three velocity
// components and every scalar channel; traced positions can be cached in fields, so that several
// channels share one trace.
#pragma once

#include <array>
#include <optional>

#include "math/mfield.h"
#include "math/occupancy.h"
#include "simulation/domain.h"
#include "simulation/fluid/block_set.h"

namespace nbx {

/// Where the samples of the advected field sit.
enum class Lookup : int { kWest = 0, kSouth = 1, kLow = 2, kCenter = 3 };
enum class Tracer : int { kRK2 = 0, kAdaptive = 1 };

/// One record per use. A cache is present only if all three of its pointers are set; its fields
/// have the dimensions of the advected field and hold the x, y and z of the traced positions.
struct AdvectionParams {
  std::array<MField*, 3> velocity{};    // U, V, W that carry the field
  std::array<MField*, 3> trace_back{};  // positions for +dt, or null
  std::array<MField*, 3> trace_fwd{};   // positions for -dt, or null
  bool back_stale = true;               // nothing of trace_back may be used
  bool fwd_stale = true;
  BlockSet traced_back, traced_fwd;  // the blocks of the caches that hold positions
  double dt = 0;                     // seconds
  double dx = 1;                     // simulation units
  double tolerance = 1;              // largest step of the adaptive tracer, in voxels
  bool cubic = false;                // cubic sampling, else trilinear
  Tracer tracer = Tracer::kRK2;
  Lookup lookup = Lookup::kCenter;
  const Domain* domain = nullptr;     // for the boundary; a scalar without one has no walls
  const Occupancy* held = nullptr;    // what a scalar may hold, or null
  std::optional<Vec3i> scalar_reach;  // of the samples of this velocity, once a scalar needs it
};

/// The whole step, dst = MacCormack transport of src. `dst` and `src` must differ; `dst` is sized
/// like `src`. Each stage ends with the boundary of the lookup: the velocity boundary of a
/// component, 0 around a scalar. For its samples, the ghost cells of a scalar beyond a wall hold
/// what is inside: this writes the border of `src`. Positions that a cache lacks are traced and
/// kept. A scalar costs what its gas costs: blocks that no gas can reach are left out.
void advect(MField& dst, MField& src, AdvectionParams& params);

/// The same for a scalar, in its own field.
void advect_scalar(MField& field, AdvectionParams& params);

/// The plain semi-Lagrangian step.
void advect_sl(MField& dst, MField& src, AdvectionParams& params);

}  // namespace nbx
