#include "C4D/run/workspace.h"

#include <algorithm>

namespace nbx {

double workspace_bytes(const SimSettings& settings, const Vec3d& cells, bool has_solids) {
  // The largest field is the one of faces across the shortest axis.
  const int shortest =
      static_cast<int>(std::min_element(cells.v.begin(), cells.v.end()) - cells.v.begin());
  double field = sizeof(float);
  for (int a = 0; a < 3; ++a) field *= cells[a] + (a == shortest ? 3 : 2);

  // Advection: traces, their twins for the way forward, the new field and its first guess. The
  // projection: right-hand side, pressure and the levels of the multigrid, with solids their masks.
  const int advection = (settings.cache_direct ? 0 : 3) + 3 + 3 + 2;
  const int projection = has_solids ? 8 : 5;
  const int solids = has_solids ? 4 : 0;  // distance and velocity
  const int velocity = 3;
  const int cached_velocity = settings.cached_channels.contains(kVelocity) ? 3 : 0;
  int cached = cached_velocity + (has_solids && settings.cached_channels.contains(kSolid) ? 1 : 0);
  for (int key : settings.simulated_channels) cached += settings.cached_channels.contains(key);

  const int fields = static_cast<int>(settings.simulated_channels.size()) +
                     std::max(advection, projection) + solids + velocity +
                     (settings.cache_direct ? 0 : cached);
  return fields * field;
}

}  // namespace nbx
