// Motion blur within a volume: a sample becomes the mean over the shutter time along the flow,
// found by walking against the velocity.
#pragma once

#include <algorithm>
#include <cmath>

#include "render/march/grid_lookup.h"
#include "render/render_volume.h"

namespace nbx {

/// Calls body(q, share, from) for blocks of places on the walks of all points. Place i of q belongs
/// to point from[i] and has the weight share[i]; the weights of a point add up to 1. A step is at
/// most blurStep voxels long, unless a walk would take more than 1024 steps. Needs velocity and a
/// blurTime above 0.
template <class Body>
void walk_flow(const RenderVolume& volume, const Points& points, Body body) {
  const double least = volume.blurTime / 1024;
  Points p = points;
  int from[kBlock];
  double remaining[kBlock];
  float share[kBlock];
  for (int i = 0; i < p.n; ++i) {
    from[i] = i;
    remaining[i] = volume.blurTime;
  }
  while (p.n > 0) {
    Colors u;
    sample_velocity(u, march_kernels().clamped, *volume.velU, *volume.velV, *volume.velW, p);
    bool last[kBlock];
    double dt[kBlock];
    for (int i = 0; i < p.n; ++i) {
      const double fastest =
          std::max({std::abs(u.c[0][i]), std::abs(u.c[1][i]), std::abs(u.c[2][i]), 0x1p-23f});
      // The time in which the flow moves by blurStep voxels.
      const double allowed = volume.blurStep * volume.metresPerVoxel / fastest;
      last[i] = !(allowed < remaining[i]) || remaining[i] <= least;
      dt[i] = last[i] ? remaining[i] : std::max(std::min(0.5 * remaining[i], allowed), least);
      dt[i] = std::min(dt[i], remaining[i]);
      share[i] = dt[i] / volume.blurTime;
    }
    body(p, share, from);
    int kept = 0;
    for (int i = 0; i < p.n; ++i) {
      if (last[i]) continue;
      const auto moved = [&](float x, float v) -> float {
        return x - v * dt[i] * volume.voxelsPerMetre;
      };
      p.x[kept] = moved(p.x[i], u.c[0][i]);
      p.y[kept] = moved(p.y[i], u.c[1][i]);
      p.z[kept] = moved(p.z[i], u.c[2][i]);
      p.t[kept] = p.t[i];
      from[kept] = from[i];
      remaining[kept++] = remaining[i] - dt[i];
    }
    p.n = kept;
  }
}

}  // namespace nbx
