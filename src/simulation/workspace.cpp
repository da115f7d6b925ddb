#include "simulation/workspace.h"

#include <algorithm>

namespace nbx {

double workspace_bytes(const SolverParams& params, const FrameSink& sink, const Vec3d& cells,
                       bool has_solids) {
  // The largest field is the one of faces across the shortest axis.
  const auto shortest = std::min_element(cells.v.begin(), cells.v.end()) - cells.v.begin();
  double field = sizeof(float);
  for (int a = 0; a < 3; ++a) field *= cells[a] + (a == shortest ? 3 : 2);

  // Advection: the trace back, the trace forward, the new fields, the first guess. Projection:
  // expansion, right-hand side, pressure, scratch, the coarse levels of the multigrid, three
  // vectors of the outer iteration; with solids the faces of the levels, and the room that growing
  // fields leave.
  const int advection = (params.keep_traces ? 3 : 0) + 3 + 3 + 2;
  const int projection = has_solids ? 16 : 8;
  // Without a projection: the potential of the detail and its map, beside a coarse frame with the
  // texture coordinates and their transport, which are far smaller.
  const int detail = 6;
  const int solids = has_solids && !params.upres ? 4 : 0;  // distance and velocity
  const int velocity = 3;
  const auto frames_hold = [&](int key) { return sink.cached_channels.contains(key) ? 1 : 0; };
  int cached = 3 * frames_hold(kVelocity) + (has_solids ? frames_hold(kSolid) : 0);
  for (int key : params.simulated_channels) cached += frames_hold(key);

  const int fields = static_cast<int>(params.simulated_channels.size()) +
                     std::max(advection, params.upres ? detail : projection) + solids + velocity +
                     (sink.cache_direct ? 0 : cached);
  return fields * field;
}

}  // namespace nbx
